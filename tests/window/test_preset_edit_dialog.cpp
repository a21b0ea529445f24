// The preset edit dialog reaches the window: a rename, a deletion and an activation there
// change the presets, the preset file and the current settings.

#include "oxPresetGUII.h"
#include "oxRenderSettingsPresetFile.h"
#include "oxSettingsWindowSupport.h"

#include <QCoreApplication>
#include <QListWidget>

namespace {

class PresetEditDialogTest : public oxSettingsWindowTest {
protected:
    static std::vector<std::string> namesInFile()
    {
        std::vector<std::string> names;
        for (const oxRenderSettingsPresetSPtr& preset : readPresetFile())
            names.push_back(preset->name);
        return names;
    }
    void addPreset(const std::string& name, int samples)
    {
        auto preset = std::make_shared<oxRenderSettingsPreset>(current());
        preset->name = name;
        preset->imageSamples = samples;
        window().getPresets().push_back(preset);
    }
};

} // namespace

TEST_F(PresetEditDialogTest, RenameDeleteAndActivateInTheDialogChangeThePresetFile)
{
    addPreset("Draft", 4);
    addPreset("Final", 64);
    window().updatePresets();
    oxPresetGUII* dialog = window().getPresetGUI();
    ASSERT_EQ(dialog->presets(), QStringList({"Draft", "Final"}));

    dialog->list()->item(0)->setText("Quick");
    QCoreApplication::processEvents();
    EXPECT_EQ(namesInFile(), std::vector<std::string>({"Quick", "Final"}));
    EXPECT_EQ(dialog->presets(), QStringList({"Quick", "Final"})) << "the dialog is filled anew";

    emit dialog->list()->itemActivated(dialog->list()->item(1));
    QCoreApplication::processEvents();
    EXPECT_EQ(current().name, "Final");
    EXPECT_EQ(current().imageSamples, 64);

    dialog->list()->setCurrentRow(0);
    oxDialogResponder::queueAnswer("Yes");
    dialog->deleteSelected();
    QCoreApplication::processEvents();
    EXPECT_EQ(namesInFile(), std::vector<std::string>({"Final"}));
    EXPECT_EQ(dialog->presets(), QStringList({"Final"}));
}
