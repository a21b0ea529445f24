#pragma once

#include "oxRenderSettingsPreset.h"

// The bridge between a settings record and the host's services that own the raytracing and
// display settings: capture reads the services into a record, merge and push bring a record
// into the current one and into the services.

/// The record with every raytracing field replaced by the host's live value; the output fields
/// and the name stay as they are.
oxRenderSettingsPreset captureRenderSettings(const oxRenderSettingsPreset& record);

/// Assigns source to target, then restores what the bits of mode keep of the target (and
/// empties the name for ClearName). Source and target may be the same record.
void mergeRenderSettings(oxRenderSettingsPreset& target, const oxRenderSettingsPreset& source,
                         int mode);

/// Hands record's raytracing and display settings to the host's services in their fixed order.
/// The spectral switch is left to the caller (it needs the window); everything after the render
/// view's samples is skipped when the host has no raytracing utilities.
void pushRenderSettings(const oxRenderSettingsPreset& record);

/// The apply modes in use.
constexpr int kApplyModeSceneLoad = oxRenderSettingsPreset::KeepSpectral;
constexpr int kApplyModeByName =
    oxRenderSettingsPreset::KeepFilename | oxRenderSettingsPreset::KeepClip |
    oxRenderSettingsPreset::KeepVariantSets | oxRenderSettingsPreset::KeepPhotometric;
constexpr int kApplyModeRenderQueue = oxRenderSettingsPreset::ClearName;

/// The display values that stand when photometric parameters are off.
constexpr float kStandardDisplayLuminance = 1.0f;
constexpr float kStandardSim2LuminanceMapping = 2000.0f;
