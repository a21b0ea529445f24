#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>
#include <vector>

/// The one composition of the image writer's output names: the writer's listing
/// (getExportedImageFilenames) and its exports both name their files here, so the two can't
/// disagree. STEM[.PASS][.FRAME]EXT; frames have at least four digits.
namespace oxImageFileNames {

/// A file of one unit (a still, or one frame of a sequence) and the passes it holds.
struct UnitFile {
    QString name;
    std::vector<unsigned> passIds;
};

/// Splits a name into the part before its extension and the extension (with its dot).
void splitExtension(const QString& path, QString& stem, QString& extension);

/// The pass ids the pass table knows, each once, in the given order.
std::vector<unsigned> knownPasses(const std::vector<unsigned>& passIds);

/// Names the files of the units of one output path. What depends on the path and the passes
/// only is worked out once, so that a long sequence costs one string per name.
class UnitNamer {
public:
    UnitNamer(const QString& path, const std::vector<unsigned>& passIds, bool multiLayer);

    /// The files of one unit: a still (sequence false) or one frame of a sequence.
    std::vector<UnitFile> files(bool sequence, int frame) const;
    /// Appends the names of the files of one unit to names.
    void appendNames(QStringList& names, bool sequence, int frame) const;
    size_t filesPerUnit() const { return m_oneFile ? 1 : m_passes.size(); }

private:
    QString name(const char* pass, bool sequence, int frame) const;

    QString m_stem;
    QString m_extension;
    std::vector<unsigned> m_passes;
    bool m_oneFile;
};

/// UnitNamer(path, passIds, multiLayer).files(sequence, frame).
std::vector<UnitFile> unitFiles(const QString& path, const std::vector<unsigned>& passIds,
                                bool multiLayer, bool sequence, int frame);

/// The frames from start to stop (both included, either direction) by |step| (at least 1).
std::vector<int> frameList(int start, int stop, int step);

} // namespace oxImageFileNames
