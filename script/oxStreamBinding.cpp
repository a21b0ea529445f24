#include "oxStreamBinding.h"

#include "oxScriptBinding.h"

#include "oxMovieExportDocs.h"
#include "oxStreamCapture.h"

#include <functional>
#include <string>
#include <utility>

using namespace boost::python;

namespace {

// The capture runs a plain C++ function; this one calls the script's callable. A script
// error becomes error_already_set, which the capture lets pass (it only stops on
// std::exception), so the script's own exception reaches the caller of imageStream.
std::function<void()> callableOf(const object& function)
{
    // The copy holds a reference on the callable for as long as the capture may call it.
    return [function]() {
        PyObject* result = PyObject_CallFunction(function.ptr(), "()");
        if (!result)
            throw_error_already_set();
        Py_DECREF(result);
    };
}

object imageStreamCommand(object function)
{
    return oxScriptBinding::bytesObject(imageStream(callableOf(function)));
}

std::string imageStreamBase64Command(object function)
{
    return imageStreamBase64(callableOf(function));
}

object createSnapshotStreamCommand(std::string mimeType, int width, int height)
{
    return oxScriptBinding::bytesObject(createSnapshotStream(std::move(mimeType), width, height));
}

} // namespace

void bindStream()
{
    // "mime-type" can't be written as a keyword argument; scripts pass it by position or
    // through a mapping (**{"mime-type": ...}).
    def("createSnapshotStream", &createSnapshotStreamCommand,
        (arg("mime-type"), arg("width"), arg("height")), oxMovieExportDoc("createSnapshotStream"));
    def("imageStream", &imageStreamCommand, arg("function"), oxMovieExportDoc("imageStream"));
    def("imageStreamBase64", &imageStreamBase64Command, arg("function"),
        oxMovieExportDoc("imageStreamBase64"));
}
