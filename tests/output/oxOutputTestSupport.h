#pragma once

// The output tests run the real module on the example scene, rendering through the host's
// raytracer into a temporary folder at a small image size.

#include "oxController.h"
#include "oxImageRenderWidget.h"
#include "oxImageWriter.h"
#include "oxMessage.h"
#include "oxModuleTest.h"
#include "oxRaytracer.h"

#include <QDir>
#include <QDirIterator>

/// A render job's module without a main window, writing small images into the folder.
class RenderJobTest : public oxModuleTest {
protected:
    void SetUp() override
    {
        oxModuleTest::SetUp();
        load(false);
        module->getImageWriter()->setNoProgress(true);
        oxRenderSettingsPreset& preset = current();
        preset = oxRenderSettingsPreset();
        preset.filename = dir.file("car.png");
        preset.pixel_width = 32.0f;
        preset.pixel_height = 18.0f;
        preset.ppi = 72.0f;
    }

    oxRenderSettingsPreset& current() const { return window()->getCurrentPreset(); }
    /// A frozen copy of the window's settings.
    oxRenderSettingsPresetSPtr record() const
    {
        return std::make_shared<oxRenderSettingsPreset>(current());
    }
    QStringList collect(const oxRenderSettingsPresetSPtr& settings) const
    {
        QStringList names;
        module->walkRenderPlan(settings, names, PlanCollect);
        return names;
    }
    void chooseVariantSets(const std::vector<std::string>& paint,
                           const std::vector<std::string>& rims)
    {
        current().variantSetsUsed = true;
        current().variantSets = {oxRenderAutomationVariantSetGroup("Paint"),
                                 oxRenderAutomationVariantSetGroup("Rims")};
        current().variantSets[0].setActiveVariantSetNames(paint);
        current().variantSets[1].setActiveVariantSetNames(rims);
    }
    QString path(const std::string& name) const { return QString::fromStdString(dir.file(name)); }
    /// Every file below the temporary folder, sorted.
    QStringList filesOnDisk() const
    {
        QStringList files;
        QDirIterator it(path(""), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            files << QDir::cleanPath(it.next());
        files.sort();
        return files;
    }
    static QStringList cleaned(QStringList names)
    {
        for (QString& name : names)
            name = QDir::cleanPath(name);
        names.sort();
        return names;
    }
};
