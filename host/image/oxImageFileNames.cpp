#include "oxImageFileNames.h"

#include "oxImagePasses.h"
#include "oxImageWriter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace oxImageFileNames {

void splitExtension(const QString& path, QString& stem, QString& extension)
{
    const int separator = std::max(path.lastIndexOf('/'), path.lastIndexOf('\\'));
    const int dot = path.lastIndexOf('.');
    if (dot > separator) {
        stem = path.left(dot);
        extension = path.mid(dot);
    } else {
        stem = path;
        extension.clear();
    }
}

std::vector<unsigned> knownPasses(const std::vector<unsigned>& passIds)
{
    std::vector<unsigned> known;
    for (unsigned id : passIds)
        if (oxImagePasses::name(id) && std::find(known.begin(), known.end(), id) == known.end())
            known.push_back(id);
    return known;
}

UnitNamer::UnitNamer(const QString& path, const std::vector<unsigned>& passIds, bool multiLayer)
    : m_passes(knownPasses(passIds)),
      m_oneFile(m_passes.empty() || (multiLayer && oxImageWriter::isMultilayerSupported(path)))
{
    splitExtension(path, m_stem, m_extension);
}

std::vector<UnitFile> UnitNamer::files(bool sequence, int frame) const
{
    std::vector<UnitFile> result;
    if (m_oneFile)
        result.push_back({name(nullptr, sequence, frame), m_passes});
    else
        for (unsigned id : m_passes)
            result.push_back({name(oxImagePasses::name(id), sequence, frame), {id}});
    return result;
}

void UnitNamer::appendNames(QStringList& names, bool sequence, int frame) const
{
    if (m_oneFile)
        names.append(name(nullptr, sequence, frame));
    else
        for (unsigned id : m_passes)
            names.append(name(oxImagePasses::name(id), sequence, frame));
}

// Built in one allocation of the exact size: a job may name a million files.
QString UnitNamer::name(const char* pass, bool sequence, int frame) const
{
    char digits[16];
    int digitCount = 0;
    if (sequence) {
        // Digits backwards into the end of the buffer, zero-padded to four.
        unsigned long long value = frame < 0 ? 0ULL - static_cast<unsigned long long>(frame)
                                             : static_cast<unsigned long long>(frame);
        char* end = digits + sizeof(digits);
        char* p = end;
        do {
            *--p = char('0' + value % 10);
            value /= 10;
        } while (value);
        while (end - p < 4)
            *--p = '0';
        if (frame < 0)
            *--p = '-';
        digitCount = int(end - p);
    }
    const int passLength = pass ? int(std::strlen(pass)) : 0;
    QString result;
    result.reserve(m_stem.size() + (pass ? 1 + passLength : 0) + (sequence ? 1 + digitCount : 0) +
                   m_extension.size());
    result += m_stem;
    if (pass) {
        result += QLatin1Char('.');
        result += QLatin1String(pass, passLength);
    }
    if (sequence) {
        result += QLatin1Char('.');
        result += QLatin1String(digits + sizeof(digits) - digitCount, digitCount);
    }
    result += m_extension;
    return result;
}

std::vector<UnitFile> unitFiles(const QString& path, const std::vector<unsigned>& passIds,
                                bool multiLayer, bool sequence, int frame)
{
    return UnitNamer(path, passIds, multiLayer).files(sequence, frame);
}

std::vector<int> frameList(int start, int stop, int step)
{
    step = std::max(1, std::abs(step));
    std::vector<int> frames;
    if (start <= stop)
        for (long long f = start; f <= stop; f += step)
            frames.push_back(int(f));
    else
        for (long long f = start; f >= stop; f -= step)
            frames.push_back(int(f));
    return frames;
}

} // namespace oxImageFileNames
