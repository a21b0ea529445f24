// What confirming the Render Settings preferences page changes at once: each changed key with
// an effect in the preference table, in the order the settings need.

#include "oxRenderSettingsPreferencesGUII.h"

#include "oxController.h"
#include "oxLiveParameters.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxOSGImage.h"
#include "oxRaytracingManager.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderParameter.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsPreferenceDefaults.h"

#include <algorithm>
#include <type_traits>
#include <vector>

namespace {

using E = oxPreferenceEffect;
using P = oxRenderSettingsPreset;
using Rows = std::vector<const oxPreferenceDefault*>;

Rows::iterator findField(Rows& rows, const oxSettingField& field)
{
    return std::find_if(rows.begin(), rows.end(),
                        [&field](const oxPreferenceDefault* row) { return row->field == field; });
}

// Moves the rows of fields, in their given order, to before the row of anchor (or after it).
void moveRows(Rows& rows, std::initializer_list<oxSettingField> fields,
              const oxSettingField& anchor, bool after)
{
    Rows moved;
    for (const oxSettingField& field : fields) {
        const auto it = findField(rows, field);
        if (it == rows.end())
            continue;
        moved.push_back(*it);
        rows.erase(it);
    }
    auto at = findField(rows, anchor);
    if (at != rows.end() && after)
        ++at;
    rows.insert(at, moved.begin(), moved.end());
}

// The table's order, but: the pixel filter before the trace depths, which the raytracer sizes
// its buffers by; the time limit and the clamp value after the devices' memory sharing, which
// restarts the renderer; the sound last, so that it is on for what the changes start.
Rows applyOrder()
{
    Rows rows;
    for (const oxPreferenceDefault& row : preferenceDefaults())
        rows.push_back(&row);
    moveRows(rows, {&P::filterType, &P::filterWidth, &P::filterHeight}, &P::maxReflectionDepth,
             false);
    moveRows(rows, {&P::renderTime, &P::useTimeLimit, &P::reflectionClampValue},
             &P::useNVLinkGeometrySharing, true);
    const auto sound = std::find_if(rows.begin(), rows.end(), [](const oxPreferenceDefault* row) {
        return row->effect == E::PlaySound;
    });
    if (sound != rows.end())
        std::rotate(sound, sound + 1, rows.end());
    return rows;
}

// Every store of field in the host, and the window's record.
template <typename T>
void writeLive(T P::*field, T value, oxRenderSettings* window)
{
    if (window)
        window->getCurrentPreset().*field = value;
    for (const oxLiveParameter& parameter : oxLiveParameters()) {
        const auto* access = std::get_if<oxLiveAccess<T>>(&parameter.access);
        if (access && access->field == field && access->set)
            access->set(value);
    }
}

template <typename T>
void applyLive(const oxPreferenceDefault& row, const T& value, oxRenderSettings* window)
{
    std::visit(
        [&](auto field) {
            using Field = std::decay_t<decltype(std::declval<P>().*field)>;
            if constexpr (std::is_same_v<Field, T> && std::is_arithmetic_v<T>)
                writeLive(field, value, window);
        },
        row.field);
}

template <typename T>
void applyEffect(const oxPreferenceDefault& row, const T& value, oxRenderSettings* window)
{
    if constexpr (std::is_arithmetic_v<T>) {
        switch (row.effect) {
        case E::Live:
            applyLive(row, value, window);
            break;
        case E::Spectral:
            if (window)
                window->changedSpectralRaytracing(value != 0);
            else
                oxRenderParameter::setSpectralRaytracing(value != 0);
            break;
        case E::BrdfMode:
            oxRenderSettings::switchBrdfMode(static_cast<int>(value));
            break;
        case E::DenoiseFilter:
            if (window)
                window->changedDenoiseFilter(static_cast<int>(value));
            else
                writeLive(&P::denoiseFilterType, static_cast<unsigned int>(value), nullptr);
            break;
        case E::Dithering:
            if (window)
                window->changedDithering(value != 0);
            break;
        case E::PlaySound:
            oxController::setPlaySoundOnExport(value != 0);
            break;
        case E::None:
        case E::ImageFilter:
            break;
        }
    }
}

// Type and both sizes go together, taken from the data as they are.
void applyImageFilter(const oxMessage& data, oxRenderSettings* window)
{
    for (const oxPreferenceDefault& row : preferenceDefaults()) {
        if (row.effect != E::ImageFilter)
            continue;
        std::visit(
            [&](const auto& fallback) {
                auto value = fallback;
                if (getFromMessage(data, row.keyName(), value))
                    applyLive(row, value, window);
            },
            row.value);
    }
    if (oxRaytracingUtilsBase* utilities = oxRaytracingManager::getRaytracingUtils())
        utilities->updatePixelFilter();
}

bool filterChanged()
{
    for (const oxPreferenceDefault& row : preferenceDefaults())
        if (row.effect == E::ImageFilter && oxPreferences::isChanged(row.keyName().c_str()))
            return true;
    return false;
}

} // namespace

void oxRenderSettingsPreferencesGUII::applyPreferences()
{
    osg::ImageFileHandler::the().setOptions("image/tiff", "compressionType=LZW");

    const oxMessage& data = getData();
    oxRenderSettings* window = oxRenderSettings::instance();
    bool filterDone = false;
    for (const oxPreferenceDefault* row : applyOrder()) {
        if (row->effect == E::None)
            continue;
        if (row->effect == E::ImageFilter) {
            if (!filterDone && filterChanged())
                applyImageFilter(data, window);
            filterDone = true;
            continue;
        }
        const std::string key = row->keyName();
        if (!isChanged(key.c_str()))
            continue;
        std::visit(
            [&](const auto& fallback) {
                auto value = fallback;
                if (getFromMessage(data, key, value))
                    applyEffect(*row, value, window);
            },
            row->value);
    }
    if (window)
        window->updateGUI();
    oxController::updateRender();
}
