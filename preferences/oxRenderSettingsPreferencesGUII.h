#pragma once

#include "oxPreferences.h"

#include <QObject>
#include <QString>

class oxRenderSettingsPreferencesGUIW;

/// The page "Render Settings" of the host's preferences dialog: the values new scenes start
/// with, and the settings that change at once when the dialog is confirmed. One page lives
/// as long as the plug-in (initPreferencesPlugin makes it); instance() reaches it.
class oxRenderSettingsPreferencesGUII : public QObject, public oxPreferences {
    Q_OBJECT
public:
    oxRenderSettingsPreferencesGUII();
    ~oxRenderSettingsPreferencesGUII() override;

    /// The living page, or null.
    static oxRenderSettingsPreferencesGUII* instance();
    oxRenderSettingsPreferencesGUIW* widget() const { return m_widget; }

    /// Writes every preference of the plug-in with its default.
    void setPreferenceDefaults(oxMessage& data, bool overwrite) override;
    /// TIFF images are written with LZW compression from now on; each changed key with an
    /// effect takes it, in the order the settings need.
    void applyPreferences() override;
    void preferencesToWidgets() override;
    void widgetsToPreferences() override;

public slots:
    void clickedSetSnapshotPath();
    void changedSelectionColor(float r, float g, float b);
    void clickedMore();
    void changedImageWidth(int width);
    void changedImageHeight(int height);
    void changedDpi(int dpi);
    void confirmChangedPBParameters(bool checked);
    void changedFinalGatherQuality(int value);
    void changedPhotonTraceDepth(int value);

private:
    void updateImageSize();

    oxRenderSettingsPreferencesGUIW* m_widget = nullptr;
};

/// The print size of an image at dpi: "W mm x H mm" and, for a portrait A0 to A6 sheet, its
/// name in brackets ("210 mm x 297 mm (A4)").
QString oxPrintSizeLabel(int width, int height, int dpi);
