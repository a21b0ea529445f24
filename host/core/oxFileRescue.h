#pragma once

#include <string>

/// Keeps a user's file that couldn't be read before anything is saved over it.
namespace oxFileRescue {

/// Moves path to path + ".bad", or to path + ".bad.1", ".bad.2" ... when that name is taken
/// (an earlier kept file is never replaced). The name it was kept under; "" when path doesn't
/// exist or couldn't be moved.
std::string keepBeside(const std::string& path);

} // namespace oxFileRescue
