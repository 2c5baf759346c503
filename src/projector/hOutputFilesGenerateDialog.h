#pragma once
// The rules of the output file generator's dialog, apart from the window: a
// directory pattern and a file pattern, in which "<P>" stands for the
// projector's number and "<F>" for the frame's, fill the 18 directories and
// files of the output files. The patterns last accepted are kept in the
// user's profile. Complaints go through message boxes. Main thread only.

#include <string>

class EImageOutputStream;
class LOutputFiles;

class hOutputFilesGenerateDialog {
public:
    static constexpr const char* ProfileKey = "Vitrea:18 saver\\Setup dialog\\Output files\\Generate";
    static constexpr const char* ExampleDialogTitle = "Select an example file...";

    // Opens with the patterns last accepted.
    explicit hOutputFilesGenerateDialog(LOutputFiles& outputs);

    // How to write the patterns for the output files' format.
    std::string GetHint() const;
    // The complaint about a pair of patterns for the output format, or an
    // empty text when the generator may run.
    static std::string CheckPatterns(const EImageOutputStream* stream, const std::string& directory,
                                     const std::string& file);
    // Checks the patterns and generates; false, after a complaint, when the
    // dialog stays open. The accepted patterns are stored in the profile.
    bool Accept();

    // Asks for an example file and takes it; false when the user cancels.
    bool ChooseExample();
    // Splits an example file into the two fields; a name without a dot gets
    // "<P>_<F>" at its end, a name with one gets the placeholders that
    // neither field holds in front of its last dot.
    void TakeExample(const std::string& path);

    std::string Directory;
    std::string File;

private:
    // The stream of the output files, or the default one.
    const EImageOutputStream* stream() const;
    // Puts the placeholder in front of the file's last dot, unless a field holds it already.
    void insertBeforeExtension(const char* placeholder);

    LOutputFiles& Outputs;
};
