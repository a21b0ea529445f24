#pragma once

/// Registers createMovie, renderAnimation and renderStepAnimation with all their forms.
void bindMovie();
