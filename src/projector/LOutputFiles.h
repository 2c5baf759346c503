#pragma once
// Where the projectors' pictures go: one output stream type with its setup
// text for all projectors, and for each of the 18 projectors a directory, a
// file name and a switch. Also remembers the last patterns of the file name
// generator. Exchanged as an output definition file (.vtfl) and kept in the
// project as the block "OutputFiles". Rules as for every LVitrea.

#include "foundation/EStringTable.h"
#include "projector/LVitrea.h"

#include <array>

class EImageOutputStream;

class LOutputFiles : public LVitrea {
public:
    static constexpr const char* FileExtension = "vtfl";
    // The file dialog's filter, with "%1" for the extension.
    static constexpr EStringId text_file_filter = 65038;
    static constexpr const char* BlockName = "OutputFiles";
    // The generator's placeholders: the projector's number and the frame's.
    static constexpr const char* ProjectorPlaceholder = "<P>";
    static constexpr const char* FramePlaceholder = "<F>";

    // Every text empty, every projector switched on.
    void Clear();

    // Reads an output definition file over cleared output files; false, with
    // the platform's error, only when the file can't be opened.
    bool LoadFromFile(const std::string& name, std::string& problem);
    // Writes an output definition file; refused, with the complaint of
    // Verify, when the definition isn't complete.
    bool SaveToFile(const std::string& name, std::string& problem) const;

    void Load(const qvrCTreeData& section, hReport& report) override;
    void Save(qvrCTreeData& section) const override;

    // The registered stream that the stream type names, or null.
    const EImageOutputStream* GetStream() const;
    // The file that a projector writes: its file with the stream's extension,
    // behind its directory and one "/" unless the directory ends in one.
    // Without a registered stream the file is taken as it stands.
    std::string GetOutputName(std::size_t projector) const;

    // Whether the stream type names a registered stream and every file is
    // given; otherwise `incomplete` is the first projector without a file,
    // or -1 when the stream type is at fault.
    bool IsComplete(long& incomplete) const;
    // IsComplete with the complaint about the fault.
    bool Verify(std::string& problem) const;
    // The complaint about a projector without a file (numbered from 1 in the text).
    static std::string EmptyFileText(std::size_t projector);
    // The complaint about a stream type that no stream is registered under.
    static std::string UnknownStreamText(const std::string& streamType);

    // Fills every directory and file from the two patterns, each "<P>"
    // replaced by the projector's number from 01 to 18, the files given the
    // stream's extension. An unknown stream type is replaced by the default
    // stream first. False, with nothing changed but the stream type, when
    // neither pattern holds "<P>".
    bool Generate(const std::string& directoryPattern, const std::string& filePattern);

    std::string LastGenDir;
    std::string LastGenFile;
    // The registered name of an output stream, and the stream's setup text.
    std::string StreamType;
    std::string StreamSetup;
    std::array<std::string, ProjectorCount> ProjectorPaths;
    std::array<std::string, ProjectorCount> ProjectorFiles;
    // False switches a projector off.
    std::array<bool, ProjectorCount> ProjectorActive = filled(true);

private:
    static constexpr std::array<bool, ProjectorCount> filled(bool value) {
        std::array<bool, ProjectorCount> flags{};
        flags.fill(value);
        return flags;
    }
    void readFileEntry(std::string_view key, std::string_view value);
    void readProjectorMode(std::string_view value);
    void loadBlock(const qvrCTreeData& block, hReport& report);
    void loadStreamType(const qvrCTreeData& block, hReport& report);
    bool loadProjector(const qvrCTreeData& block, std::size_t projector);
};
