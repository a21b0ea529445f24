#include "oxExportFormatBinding.h"

#include "oxScriptBinding.h"

#include "oxImageWriter.h"
#include "oxMovieExportDocs.h"
#include "oxOutputHost.h"

using namespace boost::python;

namespace {

// Scripts may run before the plug-in's module exists or after it went; the switches then do
// nothing and read as off, without a message, as a query should.
oxImageWriter* currentWriter()
{
    oxOutputHost* host = oxOutputHost::current();
    return host ? host->getImageWriter() : nullptr;
}

template <void (oxImageWriter::*set)(bool)>
void setSwitch(bool on)
{
    if (oxImageWriter* writer = currentWriter())
        (writer->*set)(on);
}

template <bool (oxImageWriter::*get)() const>
bool getSwitch()
{
    const oxImageWriter* writer = currentWriter();
    return writer && (writer->*get)();
}

struct ExportSwitch {
    const char* setName;
    void (*set)(bool);
    const char* getName;
    bool (*get)();
};
const ExportSwitch kExportSwitches[] = {
    {"setExportTiffHDR", &setSwitch<&oxImageWriter::setExportTiffHDR>, "getExportTiffHDR",
     &getSwitch<&oxImageWriter::getExportTiffHDR>},
    {"setExportExrHalf", &setSwitch<&oxImageWriter::setExportExrHalf>, "getExportExrHalf",
     &getSwitch<&oxImageWriter::getExportExrHalf>},
    {"setExportMultiLayer", &setSwitch<&oxImageWriter::setExportMultiLayer>, "getExportMultiLayer",
     &getSwitch<&oxImageWriter::getExportMultiLayer>},
};

} // namespace

void bindExportFormat()
{
    def("getLastRenderTime", &oxImageWriter::getLastRenderTime,
        oxMovieExportDoc("getLastRenderTime"));
    for (const ExportSwitch& exportSwitch : kExportSwitches) {
        def(exportSwitch.setName, exportSwitch.set, arg("on"),
            oxMovieExportDoc(exportSwitch.setName));
        def(exportSwitch.getName, exportSwitch.get, oxMovieExportDoc(exportSwitch.getName));
    }
}
