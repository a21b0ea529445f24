#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

/// Colours Python source in a text document: keywords, common builtins, strings (triple-quoted
/// ones across lines), comments, numbers, decorators and the names that def and class
/// introduce.
class oxPythonHighlighter : public QSyntaxHighlighter {
    Q_OBJECT
public:
    /// What a piece of source is coloured as.
    enum Role { Keyword, Builtin, String, Comment, Number, Decorator, Definition, RoleCount };

    /// Highlights document (when given) from now on.
    explicit oxPythonHighlighter(QTextDocument* document = nullptr);

    /// The format used for role.
    QTextCharFormat roleFormat(Role role) const { return m_formats[role]; }

protected:
    void highlightBlock(const QString& text) override;

private:
    // Block states: a line that ends inside a triple-quoted string passes its quote on.
    enum State { Normal = 0, InTripleSingle = 1, InTripleDouble = 2 };

    QTextCharFormat m_formats[RoleCount];
};
