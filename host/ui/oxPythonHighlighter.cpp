#include "oxPythonHighlighter.h"

#include <QColor>
#include <QFont>
#include <QSet>

#include <iterator>

namespace {

const char* const kKeywords[] = {
    "False", "None",     "True",  "and",    "as",   "assert", "async",  "await",    "break",
    "class", "continue", "def",   "del",    "elif", "else",   "except", "finally",  "for",
    "from",  "global",   "if",    "import", "in",   "is",     "lambda", "nonlocal", "not",
    "or",    "pass",     "raise", "return", "try",  "while",  "with",   "yield",
};

const char* const kBuiltins[] = {
    "abs",     "all",       "any",      "bool",       "dict",         "dir",       "enumerate",
    "filter",  "float",     "format",   "getattr",    "hasattr",      "int",       "isinstance",
    "iter",    "len",       "list",     "map",        "max",          "min",       "next",
    "object",  "open",      "print",    "range",      "repr",         "round",     "set",
    "setattr", "sorted",    "str",      "sum",        "super",        "tuple",     "type",
    "zip",     "Exception", "KeyError", "IndexError", "RuntimeError", "TypeError", "ValueError",
};

QSet<QString> wordSet(const char* const* words, size_t count)
{
    QSet<QString> set;
    for (size_t i = 0; i < count; ++i)
        set.insert(QString::fromLatin1(words[i]));
    return set;
}

const QSet<QString>& keywords()
{
    static const QSet<QString> set = wordSet(kKeywords, std::size(kKeywords));
    return set;
}

const QSet<QString>& builtins()
{
    static const QSet<QString> set = wordSet(kBuiltins, std::size(kBuiltins));
    return set;
}

bool isIdentifierStart(QChar c) { return c.isLetter() || c == QLatin1Char('_'); }
bool isIdentifierChar(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); }
bool isQuote(QChar c) { return c == QLatin1Char('\'') || c == QLatin1Char('"'); }

// r"", b'', f"", u'' and their two-letter mixes put a prefix before a string's quote.
bool isStringPrefix(const QString& word)
{
    if (word.size() > 2)
        return false;
    for (QChar c : word) {
        if (!QStringLiteral("rRbBfFuU").contains(c))
            return false;
    }
    return true;
}

QTextCharFormat makeFormat(const QColor& colour, bool bold = false, bool italic = false)
{
    QTextCharFormat format;
    format.setForeground(colour);
    if (bold)
        format.setFontWeight(QFont::Bold);
    format.setFontItalic(italic);
    return format;
}

// The end (one past the closing quote) of a string whose body starts at from, or -1 when the
// line ends first. A backslash escapes the next character, in raw strings too, as Python's
// tokenizer reads them.
int stringEnd(const QString& text, int from, const QString& quote)
{
    for (int i = from; i < text.size();) {
        if (text[i] == QLatin1Char('\\'))
            i += 2;
        else if (text.midRef(i, quote.size()) == quote)
            return i + quote.size();
        else
            ++i;
    }
    return -1;
}

} // namespace

oxPythonHighlighter::oxPythonHighlighter(QTextDocument* document) : QSyntaxHighlighter(document)
{
    m_formats[Keyword] = makeFormat(QColor(0x1f, 0x3f, 0x9f), true);
    m_formats[Builtin] = makeFormat(QColor(0x80, 0x30, 0x90));
    m_formats[String] = makeFormat(QColor(0x2e, 0x7d, 0x32));
    m_formats[Comment] = makeFormat(QColor(0x80, 0x80, 0x80), false, true);
    m_formats[Number] = makeFormat(QColor(0xb0, 0x5a, 0x00));
    m_formats[Decorator] = makeFormat(QColor(0x8a, 0x6d, 0x00));
    m_formats[Definition] = makeFormat(QColor(0x00, 0x6f, 0x8f), true);
}

void oxPythonHighlighter::highlightBlock(const QString& text)
{
    const int n = text.size();
    int i = 0;
    setCurrentBlockState(Normal);

    const int previous = previousBlockState();
    if (previous == InTripleSingle || previous == InTripleDouble) {
        const QString quote =
            previous == InTripleSingle ? QStringLiteral("'''") : QStringLiteral("\"\"\"");
        const int end = stringEnd(text, 0, quote);
        if (end < 0) {
            setFormat(0, n, m_formats[String]);
            setCurrentBlockState(previous);
            return;
        }
        setFormat(0, end, m_formats[String]);
        i = end;
    }

    bool nameFollows = false; // after def or class
    bool lineStart = text.leftRef(i).trimmed().isEmpty();
    while (i < n) {
        const QChar c = text[i];
        if (c.isSpace()) {
            ++i;
            continue;
        }
        const bool atLineStart = lineStart;
        lineStart = false;

        if (c == QLatin1Char('#')) {
            setFormat(i, n - i, m_formats[Comment]);
            return;
        }

        int stringStart = -1;
        int quoteAt = -1;
        if (isQuote(c)) {
            stringStart = quoteAt = i;
        } else if (isIdentifierStart(c)) {
            int end = i + 1;
            while (end < n && isIdentifierChar(text[end]))
                ++end;
            const QString word = text.mid(i, end - i);
            if (end < n && isQuote(text[end]) && isStringPrefix(word)) {
                stringStart = i;
                quoteAt = end;
            } else {
                if (nameFollows) {
                    setFormat(i, end - i, m_formats[Definition]);
                    nameFollows = false;
                } else if (keywords().contains(word)) {
                    setFormat(i, end - i, m_formats[Keyword]);
                    nameFollows = word == QLatin1String("def") || word == QLatin1String("class");
                } else if (builtins().contains(word)) {
                    // obj.print is an attribute, not the builtin.
                    int before = i - 1;
                    while (before >= 0 && text[before].isSpace())
                        --before;
                    if (before < 0 || text[before] != QLatin1Char('.'))
                        setFormat(i, end - i, m_formats[Builtin]);
                }
                i = end;
                continue;
            }
        }
        nameFollows = false;

        if (stringStart >= 0) {
            const QChar q = text[quoteAt];
            const bool triple = text.midRef(quoteAt, 3) == QString(3, q);
            const QString quote = triple ? QString(3, q) : QString(q);
            const int end = stringEnd(text, quoteAt + quote.size(), quote);
            if (end < 0) {
                setFormat(stringStart, n - stringStart, m_formats[String]);
                if (triple)
                    setCurrentBlockState(q == QLatin1Char('\'') ? InTripleSingle : InTripleDouble);
                return;
            }
            setFormat(stringStart, end - stringStart, m_formats[String]);
            i = end;
            continue;
        }

        const bool afterWord = i > 0 && isIdentifierChar(text[i - 1]);
        if (!afterWord &&
            (c.isDigit() || (c == QLatin1Char('.') && i + 1 < n && text[i + 1].isDigit()))) {
            int end = i + 1;
            while (end < n) {
                const QChar d = text[end];
                const QChar prev = text[end - 1];
                const bool exponentSign =
                    (d == QLatin1Char('+') || d == QLatin1Char('-')) &&
                    (prev == QLatin1Char('e') || prev == QLatin1Char('E')) &&
                    !text.midRef(i, 2).startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
                if (!isIdentifierChar(d) && d != QLatin1Char('.') && !exponentSign)
                    break;
                ++end;
            }
            setFormat(i, end - i, m_formats[Number]);
            i = end;
            continue;
        }

        // At the start of a line @ is a decorator; elsewhere it is the matrix product.
        if (c == QLatin1Char('@') && atLineStart) {
            int end = i + 1;
            while (end < n && (isIdentifierChar(text[end]) || text[end] == QLatin1Char('.')))
                ++end;
            setFormat(i, end - i, m_formats[Decorator]);
            i = end;
            continue;
        }
        ++i;
    }
}
