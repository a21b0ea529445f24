#pragma once

#include <cstddef>
#include <string>

/// Limits that every reader of files applies before handing text to a parsing library, so that
/// a hostile file ends in a clear error instead of exhausting the stack or the memory.
namespace oxInputLimits {

/// Nesting deeper than this is refused in JSON text: real models nest a few levels, and the
/// JSON libraries recurse once per level.
constexpr int kMaxJsonDepth = 128;
/// Nesting deeper than this is refused in XML text: the host's records nest four levels.
constexpr int kMaxXmlDepth = 64;
/// Longest piece of file content quoted in a message; longer ones are cut with "...".
constexpr size_t kMaxQuotedLength = 80;

/// True when the arrays and objects of JSON text nest at most maxDepth levels (strings and
/// their escapes are skipped; the text need not be valid JSON).
bool jsonDepthWithin(const char* text, size_t size, int maxDepth = kMaxJsonDepth);

/// True when the elements of XML text nest at most maxDepth levels (comments, CDATA sections,
/// processing instructions, declarations and quoted attribute values are skipped).
bool xmlDepthWithin(const char* text, size_t size, int maxDepth = kMaxXmlDepth);

/// text as it may stand in a message: at most kMaxQuotedLength bytes, cut at a UTF-8 character
/// boundary and followed by "..." when it was longer.
std::string quoted(const std::string& text);

} // namespace oxInputLimits
