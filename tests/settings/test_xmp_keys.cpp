// The host's metadata writer files each output setting under its own copy of the scene key;
// the plug-in's XMP table names the record fields whose scene keys must match those copies.

#include "oxTestSupport.h"

#include "oxImageMetaData.h"
#include "oxRenderSettingsKeys.h"

#include <set>

TEST(XmpKeys, EveryXmpPropertyIsASceneKeyTheHostWrites)
{
    oxImageMetaData metaData;
    metaData.setFileOutputImageSettings(640, 480, 72, 3, true, true, true, 0.5f, 0.5f, 0.5f, 1,
                                        121);
    metaData.setFileOutputRegionRenderSettings(true, 1, 2, 3, 4);
    metaData.setFileOutputAnimationSettings(true, 1, 1, "Turntable", 0, 10, 1, 25, true);

    std::set<std::string> names;
    for (const oxXmpProperty& property : kXmpProperties) {
        EXPECT_TRUE(names.insert(property.xmp).second) << property.xmp << " appears twice";
        const oxSettingKey* row = findSceneKey(property.field);
        ASSERT_NE(row, nullptr) << property.xmp << " has no scene key";
        EXPECT_FALSE(metaData.getValue(row->key).empty())
            << "the host files no value under '" << row->key << "' (" << property.xmp << ")";
    }
}
