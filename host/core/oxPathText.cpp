#include "oxPathText.h"

namespace oxPathText {

namespace {

// The length of the valid UTF-8 sequence at text[at] and its code point; 0 when the bytes there
// are no valid sequence (stray continuation, overlong form, surrogate, beyond U+10FFFF, cut off).
size_t utf8Sequence(const std::string& text, size_t at, char32_t& codePoint)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    size_t length = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2, codePoint = lead & 0x1F, minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3, codePoint = lead & 0x0F, minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4, codePoint = lead & 0x07, minimum = 0x10000;
    } else {
        return 0;
    }
    if (at + length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (byte(at + i) & 0x3F);
    }
    if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

void appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

} // namespace

QString toQString(const std::string& path)
{
    QString out;
    out.reserve(int(path.size()));
    for (size_t at = 0; at < path.size();) {
        char32_t c = 0;
        const size_t length = utf8Sequence(path, at, c);
        if (length == 0) {
            out += QChar(char16_t(0xDC00 + static_cast<unsigned char>(path[at])));
            ++at;
            continue;
        }
        if (c >= 0x10000) {
            out += QChar(QChar::highSurrogate(uint(c)));
            out += QChar(QChar::lowSurrogate(uint(c)));
        } else {
            out += QChar(char16_t(c));
        }
        at += length;
    }
    return out;
}

std::string fromQString(const QString& path)
{
    std::string out;
    out.reserve(size_t(path.size()));
    for (int i = 0; i < path.size(); ++i) {
        const char16_t unit = path[i].unicode();
        if (QChar::isHighSurrogate(unit) && i + 1 < path.size() &&
            QChar::isLowSurrogate(path[i + 1].unicode())) {
            appendUtf8(out, QChar::surrogateToUcs4(unit, path[++i].unicode()));
        } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
            out += char(unit - 0xDC00); // a byte that toQString kept
        } else if (QChar::isSurrogate(unit)) {
            appendUtf8(out, 0xFFFD);
        } else {
            appendUtf8(out, unit);
        }
    }
    return out;
}

} // namespace oxPathText
