#include "oxTypeConverter.h"

QStringList oxTypeConverter::toQStringList(const std::vector<std::string>& list)
{
    QStringList result;
    result.reserve(static_cast<int>(list.size()));
    for (const std::string& entry : list)
        result.append(toQString(entry));
    return result;
}

std::vector<std::string> oxTypeConverter::toStdStringList(const QStringList& list)
{
    std::vector<std::string> result;
    result.reserve(static_cast<size_t>(list.size()));
    for (const QString& entry : list)
        result.push_back(toStdString(entry));
    return result;
}
