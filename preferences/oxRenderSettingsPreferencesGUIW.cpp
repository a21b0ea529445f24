#include "oxRenderSettingsPreferencesGUIW.h"

#include <QEvent>

oxRenderSettingsPreferencesGUIW::oxRenderSettingsPreferencesGUIW(QWidget* parent) : QWidget(parent)
{
    setupUi(this);
}

void oxRenderSettingsPreferencesGUIW::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi(this);
    QWidget::changeEvent(event);
}
