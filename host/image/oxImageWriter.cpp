#include "oxImageWriter.h"

#include "oxCallTrace.h"

#include <algorithm>

namespace {
std::vector<oxImageWriter*>& writers()
{
    // Never destroyed: a writer that its owner leaves alive stays reachable to the very end.
    static auto* all = new std::vector<oxImageWriter*>();
    return *all;
}
} // namespace

oxImageWriter::oxImageWriter() { writers().push_back(this); }

oxImageWriter::~oxImageWriter()
{
    auto& all = writers();
    all.erase(std::remove(all.begin(), all.end(), this), all.end());
}

const std::vector<oxImageWriter*>& oxImageWriter::getAll() { return writers(); }

void oxImageWriter::resetExportSettings()
{
    oxCallTrace::record("oxImageWriter::resetExportSettings");
    m_tiffHDR = false;
    m_exrHalf = true;
    m_multiLayer = false;
}

void oxImageWriter::setExportTiffHDR(bool on)
{
    oxCallTrace::record("oxImageWriter::setExportTiffHDR", on ? "true" : "false");
    m_tiffHDR = on;
}

void oxImageWriter::setExportExrHalf(bool on)
{
    oxCallTrace::record("oxImageWriter::setExportExrHalf", on ? "true" : "false");
    m_exrHalf = on;
}

void oxImageWriter::setExportMultiLayer(bool on)
{
    oxCallTrace::record("oxImageWriter::setExportMultiLayer", on ? "true" : "false");
    m_multiLayer = on;
}
