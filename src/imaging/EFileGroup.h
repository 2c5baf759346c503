#pragma once
// Numbered file sequences. An EFileGroup names a series of files by the text
// in front of the number (Head), the text behind it with the extension (Tail),
// the digit count and the first and last number: Head "shot_", Tail ".tga",
// NumLen 4, Min 1, Max 250 stands for shot_0001.tga to shot_0250.tga. An
// EFileGroupScanner turns the files of a directory into such groups.
//
// A group is plain data: one thread at a time. Names are compared without
// regard to case, as footage moves between file systems that differ in that.
// Scans report an unreadable directory through their result and never throw.

#include <cstdint>
#include <string>
#include <string_view>

class hReport;
class qvrCTreeData;

class EFileGroup {
public:
    EFileGroup() = default;
    EFileGroup(std::string head, std::string tail, std::uint32_t numLen, std::uint32_t min,
               std::uint32_t max);
    virtual ~EFileGroup() = default;
    EFileGroup(const EFileGroup&) = default;
    EFileGroup& operator=(const EFileGroup&) = default;

    // A printf format of the group's names with one long argument, such as
    // "shot_%04ld.tga"; a percent sign of Head or Tail is doubled.
    std::string GetFileNamePattern() const;
    std::string GetFileName(long number) const;
    // Whether `fileName` (without directory) belongs to the group; its number
    // goes to `number`, which is -1 when it doesn't.
    bool Matches(std::string_view fileName, long& number) const;

    // Writes the five keys into `section`.
    void Save(qvrCTreeData& section) const;
    // Reads the keys that `section` holds; a range given backwards is turned
    // round with a warning to `report`.
    void Load(const qvrCTreeData& section, hReport& report);

    std::string Head;
    std::string Tail;
    // The digit count of every number, 0 when the names are not padded.
    std::uint32_t NumLen = 0;
    std::uint32_t Min = 0;
    std::uint32_t Max = 0;
};

// Finds the numbered sequences among the files of a directory. A derived
// class takes the groups in OnGroupFound. Single files make no group, and a
// gap in the numbers splits a sequence in two.
class EFileGroupScanner {
public:
    virtual ~EFileGroupScanner() = default;

    // Scans the files that match `patternPath`, a directory and a shell-style
    // wildcard for the names ("/footage/*.tga"), matched without regard to
    // case. False with `reason` when the directory can't be read; a scan that
    // OnGroupFound stops is a success.
    virtual bool ScanDirectory(const std::string& patternPath, std::string& reason);

protected:
    // One group, in the order of the sorted names; false ends the scan.
    virtual bool OnGroupFound(const EFileGroup& group) = 0;
};
