#pragma once

/// Registers createSnapshot with all its forms.
void bindSnapshot();
/// Registers the fast snapshot commands and the settings that every later snapshot uses
/// (quality, image display, ICC profile, embedded metadata).
void bindSnapshotSettings();
