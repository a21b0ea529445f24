#pragma once

#include <QString>
#include <QStringList>

#include <string>
#include <vector>

/// Conversions between the host's string and list types.
class oxTypeConverter {
public:
    static QString toQString(const std::string& text)
    {
        return QString::fromUtf8(text.c_str(), static_cast<int>(text.size()));
    }
    static std::string toStdString(const QString& text) { return text.toUtf8().toStdString(); }
    static QStringList toQStringList(const std::vector<std::string>& list);
    static std::vector<std::string> toStdStringList(const QStringList& list);
};
