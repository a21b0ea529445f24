#include "oxInputLimits.h"

#include <cstring>

namespace oxInputLimits {

bool jsonDepthWithin(const char* text, size_t size, int maxDepth)
{
    int depth = 0;
    bool inString = false;
    for (size_t i = 0; i < size; ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\')
                ++i; // the escaped character can't end the string
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > maxDepth)
                return false;
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return true;
}

namespace {

// Index just past the first occurrence of end at or after from; size when there is none.
size_t skipPast(const char* text, size_t size, size_t from, const char* end)
{
    const size_t length = std::strlen(end);
    for (size_t i = from; i + length <= size; ++i)
        if (std::memcmp(text + i, end, length) == 0)
            return i + length;
    return size;
}

bool startsWith(const char* text, size_t size, size_t at, const char* prefix)
{
    const size_t length = std::strlen(prefix);
    return at + length <= size && std::memcmp(text + at, prefix, length) == 0;
}

} // namespace

bool xmlDepthWithin(const char* text, size_t size, int maxDepth)
{
    int depth = 0;
    size_t i = 0;
    while (i < size) {
        if (text[i] != '<') {
            ++i;
            continue;
        }
        if (startsWith(text, size, i, "<!--")) {
            i = skipPast(text, size, i + 4, "-->");
        } else if (startsWith(text, size, i, "<![CDATA[")) {
            i = skipPast(text, size, i + 9, "]]>");
        } else if (startsWith(text, size, i, "<?")) {
            i = skipPast(text, size, i + 2, "?>");
        } else if (startsWith(text, size, i, "<!")) {
            // A document type declaration may hold bracketed markup of its own.
            int brackets = 0;
            for (++i; i < size; ++i) {
                if (text[i] == '[')
                    ++brackets;
                else if (text[i] == ']')
                    --brackets;
                else if (text[i] == '>' && brackets <= 0)
                    break;
            }
            ++i;
        } else if (startsWith(text, size, i, "</")) {
            if (depth > 0)
                --depth;
            i = skipPast(text, size, i + 2, ">");
        } else {
            // A start tag: find its end outside quoted attribute values.
            char quote = 0;
            bool selfClosing = false;
            for (++i; i < size; ++i) {
                const char c = text[i];
                if (quote) {
                    if (c == quote)
                        quote = 0;
                } else if (c == '"' || c == '\'') {
                    quote = c;
                } else if (c == '>') {
                    selfClosing = text[i - 1] == '/';
                    break;
                }
            }
            ++i;
            if (!selfClosing && ++depth > maxDepth)
                return false;
        }
    }
    return true;
}

std::string quoted(const std::string& text)
{
    if (text.size() <= kMaxQuotedLength)
        return text;
    size_t cut = kMaxQuotedLength;
    // Back up over continuation bytes so that no character is split.
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;
    return text.substr(0, cut) + "...";
}

} // namespace oxInputLimits
