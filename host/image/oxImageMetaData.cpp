#include "oxImageMetaData.h"

#include "oxCallTrace.h"
#include "oxMessage.h"

#include <cstdio>
#include <sstream>

namespace {
std::string text(bool value) { return value ? "true" : "false"; }
std::string text(int value) { return std::to_string(value); }
std::string text(float value)
{
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%g", double(value));
    return buffer;
}

std::string escape(const std::string& value)
{
    std::string out;
    for (char c : value) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string anyText(const boost::any& value)
{
    if (value.type() == typeid(bool))
        return text(boost::any_cast<bool>(value));
    if (value.type() == typeid(int))
        return text(boost::any_cast<int>(value));
    if (value.type() == typeid(float))
        return text(boost::any_cast<float>(value));
    if (value.type() == typeid(double))
        return text(float(boost::any_cast<double>(value)));
    if (value.type() == typeid(std::string))
        return boost::any_cast<std::string>(value);
    return std::string();
}

// The message keys of the settings, as the plug-in's settings record names them.
const char* const kWidth = "ImageExport floatwidth";
const char* const kHeight = "ImageExport floatheight";
} // namespace

std::map<std::string, std::string>& oxImageMetaData::getRenderSettingsXMPToMsgMap()
{
    static auto* map = new std::map<std::string, std::string>();
    return *map;
}

void oxImageMetaData::store(int group, const std::string& key, const std::string& value)
{
    m_values[key] = {group, value};
}

void oxImageMetaData::setFileOutputImageSettings(float pixelWidth, float pixelHeight, float ppi,
                                                 int ssFactor, bool tonemapHDR, bool alpha,
                                                 bool premultiply, float red, float green,
                                                 float blue, int iccProfileID, int metaDataFlags)
{
    oxCallTrace::record("oxImageMetaData::setFileOutputImageSettings");
    const int g = FILEOUTPUT_IMAGE_SETTINGS;
    store(g, kWidth, text(pixelWidth));
    store(g, kHeight, text(pixelHeight));
    store(g, "MovieExport ppi", text(ppi));
    store(g, "MovieExport ssfactor", text(ssFactor));
    store(g, "MovieExport tonemap hdr", text(tonemapHDR));
    store(g, "MovieExport alpha", text(alpha));
    store(g, "MovieExport Premultiply", text(premultiply));
    store(g, "MovieExport Premultiply Red", text(red));
    store(g, "MovieExport Premultiply Green", text(green));
    store(g, "MovieExport Premultiply Blue", text(blue));
    store(g, "MovieExport ICC Profile", text(iccProfileID));
    store(g, "ImageExport Embed MetaData Flags", text(metaDataFlags));
}

void oxImageMetaData::setFileOutputRegionRenderSettings(bool useRegion, int startX, int startY,
                                                        int endX, int endY)
{
    oxCallTrace::record("oxImageMetaData::setFileOutputRegionRenderSettings");
    const int g = FILEOUTPUT_IMAGE_SETTINGS;
    store(g, "ImageExport use region render", text(useRegion));
    store(g, "ImageExport region start x", text(startX));
    store(g, "ImageExport region start y", text(startY));
    store(g, "ImageExport region end x", text(endX));
    store(g, "ImageExport region end y", text(endY));
}

void oxImageMetaData::setFileOutputAnimationSettings(bool renderAnimation, int animationType,
                                                     int exportType, const std::string& clip,
                                                     int startFrame, int stopFrame, int stepFrame,
                                                     int fps, bool useClipRange)
{
    oxCallTrace::record("oxImageMetaData::setFileOutputAnimationSettings");
    const int g = FILEOUTPUT_ANIMATION_SETTINGS;
    store(g, "MovieExport Render Animation", text(renderAnimation));
    store(g, "MovieExport Animation Type", text(animationType));
    store(g, "MovieExport Animation Format", text(exportType));
    store(g, "MovieExport Clip", clip);
    store(g, "MovieExport start frame", text(startFrame));
    store(g, "MovieExport stop frame", text(stopFrame));
    store(g, "MovieExport step frame", text(stepFrame));
    store(g, "MovieExport fps", text(fps));
    store(g, "MovieExport Use Clip Range", text(useClipRange));
}

void oxImageMetaData::setFileOutputRenderPasses(const oxMessage& passes)
{
    oxCallTrace::record("oxImageMetaData::setFileOutputRenderPasses");
    m_passes.clear();
    for (const auto& entry : passes.getMap())
        m_passes.emplace_back(entry.first, anyText(entry.second));
}

void oxImageMetaData::clear()
{
    m_values.clear();
    m_passes.clear();
}

std::string oxImageMetaData::getValue(const std::string& messageKey) const
{
    const auto it = m_values.find(messageKey);
    return it == m_values.end() ? std::string() : it->second.second;
}

std::string
oxImageMetaData::buildXMP(int flags,
                          const std::vector<std::pair<std::string, std::string>>& camera) const
{
    std::ostringstream body;
    for (const auto& entry : getRenderSettingsXMPToMsgMap()) {
        const auto it = m_values.find(entry.second);
        if (it != m_values.end() && (flags & it->second.first))
            body << "   <ox:" << entry.first << ">" << escape(it->second.second)
                 << "</ox:" << entry.first << ">\n";
    }
    auto bag = [&](const char* name,
                   const std::vector<std::pair<std::string, std::string>>& items) {
        if (items.empty())
            return;
        body << "   <ox:" << name << "><rdf:Bag>\n";
        for (const auto& item : items)
            body << "    <rdf:li>" << escape(item.first) << "=" << escape(item.second)
                 << "</rdf:li>\n";
        body << "   </rdf:Bag></ox:" << name << ">\n";
    };
    if (flags & FILEOUTPUT_RENDERPASSES_SETTINGS)
        bag("renderPasses", m_passes);
    if (flags & CAMERA_SETTINGS)
        bag("camera", camera);
    const std::string properties = body.str();
    if (properties.empty())
        return std::string();
    std::ostringstream packet;
    packet << "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           << "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           << " <rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           << "  <rdf:Description rdf:about=\"\" xmlns:ox=\"" << xmpNamespace << "\">\n"
           << properties << "  </rdf:Description>\n </rdf:RDF>\n</x:xmpmeta>\n"
           << "<?xpacket end=\"w\"?>";
    return packet.str();
}
