// The script module oxRenderSettings: the Render Settings window's output and raytracing
// settings, and the start of a render.

#include "oxScriptModule.h"

#include "oxRenderSettingsOutputBinding.h"
#include "oxRenderSettingsRaytracingBinding.h"

namespace {

const char kModuleName[] = "oxRenderSettings";

// The output family first, then the raytracing family: the module's command order.
void bindCommands()
{
    bindRenderSettingsOutput();
    bindRenderSettingsRaytracing();
}

} // namespace

extern "C" BOOST_SYMBOL_EXPORT PyObject* PyInit_oxRenderSettings()
{
    return oxScriptModule::create<&bindCommands>(kModuleName);
}

namespace {
const oxScriptModuleRegistrar registrar(kModuleName, &PyInit_oxRenderSettings);
} // namespace
