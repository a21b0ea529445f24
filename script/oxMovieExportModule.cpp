#include "oxScriptBinding.h"

#include "oxExportFormatBinding.h"
#include "oxMovieBinding.h"
#include "oxRenderPassBinding.h"
#include "oxSnapshotBinding.h"
#include "oxStreamBinding.h"

#include "oxPythonRegister.h"
#include "oxScript.h"

namespace {

const char kModuleName[] = "oxMovieExport";

void initModule()
{
    // Script editors show the hand-written docstrings; generated signatures would only
    // repeat the C++ types.
    const boost::python::docstring_options docstrings(true, false, false);

    // Family by family, in the module's documented command order. Within one name the order
    // of the overloads matters: Boost.Python tries the last registered one first.
    bindSnapshot();
    bindStream();
    bindSnapshotSettings();
    bindMovie();
    bindRenderPass();
    bindExportFormat();
}

} // namespace

extern "C" BOOST_SYMBOL_EXPORT PyObject* PyInit_oxMovieExport()
{
    static PyModuleDef_Base base = PyModuleDef_HEAD_INIT;
    static PyMethodDef noMethods[] = {{nullptr, nullptr, 0, nullptr}};
    static PyModuleDef definition = {base,    kModuleName, nullptr, -1,     noMethods,
                                     nullptr, nullptr,     nullptr, nullptr};
    return boost::python::detail::init_module(definition, &initModule);
}

namespace {

// The module is built into the interpreter before it starts, then imported and star-imported
// so that the host's scripts call the commands without a prefix.
const oxPythonRegister registrar([](oxPythonRegisterFactory::Level level) {
    switch (level) {
    case oxPythonRegisterFactory::BeforeInitialize:
        PyImport_AppendInittab(kModuleName, &PyInit_oxMovieExport);
        break;
    case oxPythonRegisterFactory::AfterInitialize:
        oxScript::run("import oxMovieExport");
        oxScript::run("from oxMovieExport import *");
        break;
    default:
        break;
    }
});

} // namespace
