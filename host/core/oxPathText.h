#pragma once

#include <QString>

#include <string>

/// File names between the host's byte strings and QString. File names are bytes: a name that
/// isn't UTF-8 must reach the file system unchanged, while QString::fromStdString would replace
/// its bytes for good.
namespace oxPathText {

/// A file name's bytes as a QString that fromQString turns back into the same bytes: UTF-8 is
/// decoded, and each byte that is no part of valid UTF-8 is held as the lone surrogate
/// U+DC80 + (byte - 0x80).
QString toQString(const std::string& path);
/// The bytes of a file name that toQString made (for other text: its UTF-8).
std::string fromQString(const QString& path);

} // namespace oxPathText
