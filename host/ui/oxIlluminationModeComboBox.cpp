#include "oxIlluminationModeComboBox.h"

#include <QComboBox>
#include <QCoreApplication>

namespace {

struct Mode {
    int id;
    const char* text;
};

const Mode kLegacyModes[] = {
    {-1, QT_TRANSLATE_NOOP("oxIlluminationModeComboBox", "Precomputed")},
    {0, QT_TRANSLATE_NOOP("oxIlluminationModeComboBox", "Precomputed + Reflections")},
    {1, QT_TRANSLATE_NOOP("oxIlluminationModeComboBox", "Precomputed + Shadows")},
    {2, QT_TRANSLATE_NOOP("oxIlluminationModeComboBox", "Precomputed + IBL")},
    {3, QT_TRANSLATE_NOOP("oxIlluminationModeComboBox", "Full Global Illumination")},
};

} // namespace

void oxIlluminationModeComboBox::initLegacy(QComboBox* box)
{
    if (!box)
        return;
    box->clear();
    for (const Mode& mode : kLegacyModes)
        box->addItem(QCoreApplication::translate("oxIlluminationModeComboBox", mode.text), mode.id);
}
