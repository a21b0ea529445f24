#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

class oxMessage;

/// The settings that the image writer embeds into written images as XMP (PNG, JPEG, TIFF,
/// EXR). Values are stored under the message keys of the settings; the map from XMP property
/// names to those keys is filled by whoever supplies the settings.
class oxImageMetaData {
public:
    /// Bits of the metadata flags (oxImageWriter::setMetaDataFlags).
    enum Flags {
        CAMERA_SETTINGS = 1,
        NODE_VISIBILITIES = 2,
        SWITCH_NODE_STATES = 4,
        FILEOUTPUT_IMAGE_SETTINGS = 8,
        FILEOUTPUT_ANIMATION_SETTINGS = 16,
        FILEOUTPUT_RENDERPASSES_SETTINGS = 32,
        RAYTRACING_SETTINGS = 64,
        SWITCH_MATERIAL_STATES = 128,
    };

    /// True: this host writes XMP.
    static bool isXMPSupported() { return true; }
    /// XMP property name -> message key. Empty until filled.
    static std::map<std::string, std::string>& getRenderSettingsXMPToMsgMap();

    void setFileOutputImageSettings(float pixelWidth, float pixelHeight, float ppi, int ssFactor,
                                    bool tonemapHDR, bool alpha, bool premultiply, float red,
                                    float green, float blue, int iccProfileID, int metaDataFlags);
    void setFileOutputRegionRenderSettings(bool useRegion, int startX, int startY, int endX,
                                           int endY);
    void setFileOutputAnimationSettings(bool renderAnimation, int animationType, int exportType,
                                        const std::string& clip, int startFrame, int stopFrame,
                                        int stepFrame, int fps, bool useClipRange);
    /// Every attribute of passes (scene key -> bool) is embedded as one render pass entry.
    void setFileOutputRenderPasses(const oxMessage& passes);
    /// Forgets every value.
    void clear();

    /// The value stored under a message key, or "" when none.
    std::string getValue(const std::string& messageKey) const;

    /// The XMP packet for the given flags, or "" when no selected group holds a value.
    /// camera is embedded when the camera bit is set.
    std::string buildXMP(int flags,
                         const std::vector<std::pair<std::string, std::string>>& camera) const;

    /// The namespace of the properties in the packet.
    static constexpr const char* xmpNamespace = "http://ns.oxlin.org/rendersettings/1.0/";

private:
    void store(int group, const std::string& key, const std::string& value);

    std::map<std::string, std::pair<int, std::string>> m_values; // key -> (group, text)
    std::vector<std::pair<std::string, std::string>> m_passes;
};
