#pragma once

/// The docstring of the oxMovieExport script command of that name, or null for a command that
/// has none. Overloads of a name share it: it is attached to the last overload registered.
const char* oxMovieExportDoc(const char* command);
