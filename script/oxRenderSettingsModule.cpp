#include "oxScriptBinding.h"

#include "oxRenderSettingsOutputBinding.h"
#include "oxRenderSettingsRaytracingBinding.h"

#include "oxPythonRegister.h"
#include "oxScript.h"

namespace {

const char kModuleName[] = "oxRenderSettings";

void initModule()
{
    // Script editors show the hand-written docstrings; generated signatures would only
    // repeat the C++ types.
    const boost::python::docstring_options docstrings(true, false, false);

    // The output family first, then the raytracing family: the module's command order.
    bindRenderSettingsOutput();
    bindRenderSettingsRaytracing();
}

} // namespace

extern "C" BOOST_SYMBOL_EXPORT PyObject* PyInit_oxRenderSettings()
{
    static PyModuleDef_Base base = PyModuleDef_HEAD_INIT;
    static PyMethodDef noMethods[] = {{nullptr, nullptr, 0, nullptr}};
    static PyModuleDef definition = {base,    kModuleName, nullptr, -1,     noMethods,
                                     nullptr, nullptr,     nullptr, nullptr};
    return boost::python::detail::init_module(definition, &initModule);
}

namespace {

// Built into the interpreter before it starts, then imported and star-imported so that the
// host's scripts call the commands without a prefix.
const oxPythonRegister registrar([](oxPythonRegisterFactory::Level level) {
    switch (level) {
    case oxPythonRegisterFactory::BeforeInitialize:
        PyImport_AppendInittab(kModuleName, &PyInit_oxRenderSettings);
        break;
    case oxPythonRegisterFactory::AfterInitialize:
        oxScript::run("import oxRenderSettings");
        oxScript::run("from oxRenderSettings import *");
        break;
    default:
        break;
    }
});

} // namespace
