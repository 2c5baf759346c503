#pragma once
// Streams that write one file a frame, the name of each carrying a number: the
// abstract sequence stream, its setup (digits and numbering) and its writer.
// A sequence writer keeps no per-call state, so several render threads may
// write through it at once, each frame into a file of its own.

#include "output/EImageOutputStream.h"

#include <memory>
#include <string>
#include <string_view>

// How the files of a sequence are numbered. Stored as "SQ%ld|%c|%ld|%ld":
// digits, y or n for own numbering, start, step. Not safe from several
// threads while it changes.
class EImageOutputSequenceSetup : public EImageOutputSetup {
public:
    // The stream gives the extension of the description's examples.
    explicit EImageOutputSequenceSetup(const EImageOutputStream& streamClass) : stream(&streamClass) {}

    // False only when own numbering is on with a step of 0.
    bool IsValid() const override;
    void Repair() override;
    void Reset() override;
    std::string GetSetupString() const override;
    // False, with the defaults set, for a text that doesn't parse; a text that
    // parses to unusable values gives the defaults and true.
    bool SetSetupString(std::string_view text) override;
    std::string GetDescription() const override;

    // The number in the name of a frame's file.
    long FileNumber(long frameIndex) const { return ownNumbering ? start + step * frameIndex : frameIndex; }

    // Least number of digits of the number in a file name, at most MaxDigits.
    long digits = 4;
    // The digits of the longest number a file name holds, one of 32 bits.
    static constexpr long MaxDigits = 10;
    // Off: a file is numbered by its frame index; on: by start + step × frame index.
    bool ownNumbering = false;
    long start = 0;
    long step = 1;

private:
    const EImageOutputStream* stream;
};

// The abstract stream of one file a frame.
class EImageOutputSequence : public EImageOutputStream {
public:
    bool IsMovie() const override { return false; }
    bool IsSequence() const override { return true; }
    bool UsesSetup() const override { return true; }
    std::unique_ptr<EImageOutputSetup> CreateSetup() const override;
    // Tests that the name can be written, then gives a sequence writer.
    std::unique_ptr<EImageOutputWriter> Open(const std::string& fileName, CSize frameSize,
                                             EImageOutputError& error, const EImageOutputSetup* setup,
                                             unsigned long rate, unsigned long rateStep) const override;
    // Writes one picture into one file. Called from several threads at once.
    virtual bool WriteImageFile(const std::string& fileName, const EImageData& image,
                                EImageOutputError& error) const = 0;

protected:
    using EImageOutputStream::EImageOutputStream;
};

// Writes each frame into the file whose name the pattern gives for its number.
class EImageOutputSequenceWriter : public EImageOutputWriter {
public:
    // A setup that is absent or of another kind is replaced by a default one.
    EImageOutputSequenceWriter(const EImageOutputSequence& streamClass, const std::string& fileName,
                               const EImageOutputSetup* setupGiven);

    bool Write(const EImageData& image, long frameIndex, EImageOutputError& error) override;
    bool Close(EImageOutputError&) override { return true; }

    // The printf pattern of the file names, such as "out%04ld.bmp".
    const std::string& GetPattern() const { return pattern; }

private:
    const EImageOutputSequenceSetup& Numbering() const;

    std::unique_ptr<EImageOutputSequenceSetup> ownSetup;
    std::string pattern;
};
