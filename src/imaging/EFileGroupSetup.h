#pragma once
// The files of one piece of footage: a numbered sequence (the file group) or
// a single still image, the directory they lie in, the pixel aspect of the
// pictures, whether previews read them through proxies, and the picture size
// found when the files were examined (0 by 0 until then). It keeps itself in
// a project file as the block "File Group setup".
//
// Plain data: one thread at a time; the footage object guards its own.

#include "foundation/qvrGeometry.h"
#include "imaging/EFileGroup.h"

#include <string>

class EFileGroupSetup : public EFileGroup {
public:
    static constexpr const char* BlockName = "File Group setup";

    // No files at all.
    EFileGroupSetup() = default;
    // A numbered sequence in the directory.
    EFileGroupSetup(std::string directory, const EFileGroup& group);
    // One still image in the directory.
    static EFileGroupSetup SingleFile(std::string directory, std::string fileName);
    // The form of old project files: a name with a run of "#" stands for a
    // sequence of `count` numbers from `firstNumber`, padded to the run's
    // length; a name without "#" is a single file.
    static EFileGroupSetup FromDisplayName(std::string directory, const std::string& displayName, long count,
                                           long firstNumber);

    bool IsSequence() const { return Sequence; }
    // Neither a sequence nor a file.
    bool IsEmpty() const { return !Sequence && SingleName.empty(); }
    const std::string& GetDirectory() const { return Directory; }
    // The name shown to people: the single file's name, or the sequence's
    // with a "#" for each digit ("shot_####.tga").
    std::string GetDisplayFileName() const;
    // The file of a number of the sequence, or the single file's name whatever the number.
    std::string GetFileForNumber(long number) const;
    long GetFirstNumber() const { return static_cast<long>(Min); }
    long GetLastNumber() const { return static_cast<long>(Max); }
    // Whether both name the same files, without regard to case.
    bool IsSameFiles(const EFileGroupSetup& other) const;

    // An aspect below 0.0001 is no aspect: it stands for 1.0.
    static double ValidAspect(double aspect);

    // Writes the block "File Group setup" into `section`.
    void SaveSetup(qvrCTreeData& section) const;
    // Reads the block "File Group setup" of `section`; false when it is missing.
    bool LoadSetup(const qvrCTreeData& section, hReport& report);

    // The width of a pixel against its height; applies to the width alone.
    double Aspect = 1.0;
    bool UseProxies = true;
    CSize ImageSize;

private:
    std::string Directory;
    bool Sequence = false;
    std::string SingleName;
};
