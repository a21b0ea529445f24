// The script module oxMovieExport: snapshots, image streams, movies, the render pass override
// and the export format switches.

#include "oxScriptModule.h"

#include "oxExportFormatBinding.h"
#include "oxMovieBinding.h"
#include "oxRenderPassBinding.h"
#include "oxSnapshotBinding.h"
#include "oxStreamBinding.h"

namespace {

const char kModuleName[] = "oxMovieExport";

// Family by family, in the module's documented command order. Within one name the order of the
// overloads matters: Boost.Python tries the last registered one first.
void bindCommands()
{
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
    return oxScriptModule::create<&bindCommands>(kModuleName);
}

namespace {
const oxScriptModuleRegistrar registrar(kModuleName, &PyInit_oxMovieExport);
} // namespace
