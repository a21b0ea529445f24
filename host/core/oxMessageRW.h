#pragma once

#include <string>

class oxMessage;

/// Reads and writes an oxMessage as typed, human-readable XML.
///
/// Every value type a record may hold is written with its type, so that a read gives back
/// exactly the types that were stored: bool, int, unsigned int, float (bit-exact), std::string
/// (a stored const char* reads back as std::string), QString, the vectors of int, unsigned int,
/// float, bool and std::string, vectors of string pairs, and (nested) vectors of
/// oxRenderAutomationVariantSetGroup. Record attributes (oxMessage::addAttribute) are written as
/// XML attributes of the root element.
class oxMessageRW {
public:
    /// The version of the XML form written by this host.
    static constexpr int formatVersion = 1;

    /// Writes message to filename atomically (temporary file in the same folder, then rename).
    /// False when the file can't be written or a value has a type this form doesn't know; an
    /// existing file is then left as it was.
    static bool write(const oxMessage& message, const char* filename);

    /// Writes message into text (replacing its content). False on an unknown value type.
    static bool write(const oxMessage& message, std::string& text);

    /// Reads filename into message, or text when filename is null or empty. The message is
    /// replaced only on success; false on any malformed, truncated or unreadable input.
    /// Reading logs nothing; lastError() then says why the last read on this thread failed.
    static bool read(oxMessage& message, const char* filename, const std::string& text);

    /// The reason the last failed read on this thread gave ("" after a successful one).
    static const std::string& lastError();

    /// The format version the root element of the last read on this thread declared (0 when
    /// it declared none or wasn't reached), so that callers can tell a file of a newer host
    /// from a damaged one.
    static int lastFormatVersion();
};
