#pragma once

#include "ui_oxRenderSettingsPreferencesGUI.h"

#include <QWidget>

/// The widget of the Render Settings preferences page: the generated form and nothing else.
class oxRenderSettingsPreferencesGUIW : public QWidget, public Ui_oxRenderSettingsPreferencesGUI {
    Q_OBJECT
public:
    explicit oxRenderSettingsPreferencesGUIW(QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;
};
