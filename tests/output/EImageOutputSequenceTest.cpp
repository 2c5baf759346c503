#include "OutputTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using qvrTest::MakeNoise;

using qvrTest::BmpSequence;
using qvrTest::EmptyDirectory;

EImageOutputSequenceSetup ParsedSetup(std::string_view text) {
    EImageOutputSequenceSetup setup(BmpSequence());
    EXPECT_TRUE(setup.SetSetupString(text)) << text;
    return setup;
}

TEST(SequenceSetup, TextRoundTripsAndParsesLoosely) {
    EImageOutputSequenceSetup setup(BmpSequence());
    EXPECT_EQ(setup.GetSetupString(), "SQ4|n|0|1");
    EXPECT_EQ(ParsedSetup("SQ6|y|-3|2").GetSetupString(), "SQ6|y|-3|2");
    EXPECT_TRUE(ParsedSetup("SQ4|x|0|1").ownNumbering);
    EXPECT_FALSE(ParsedSetup("SQ4|N|0|1").ownNumbering);
    EXPECT_EQ(ParsedSetup("SQ4|y|5|0").GetSetupString(), "SQ4|n|0|1");
    EXPECT_EQ(ParsedSetup("SQ10|n|0|1").GetSetupString(), "SQ10|n|0|1");
    for (const char* unusable : {"SQ888888888|n|0|80", "SQ-3|n|0|1"})
        EXPECT_EQ(ParsedSetup(unusable).GetSetupString(), "SQ4|n|0|1") << unusable;
}

TEST(SequenceSetup, TextThatDoesNotParseGivesTheDefaults) {
    for (const char* bad : {"AB4|n|0|1", "SQ", "S", "", "SQ4|n|0", "SQx|n|0|1", "SQ4|n|a|1", "SQ4|n|0|1|2",
                            "SQ4|y|0|4294967296"}) {
        EImageOutputSequenceSetup setup(BmpSequence());
        setup.digits = 7;
        setup.ownNumbering = true;
        EXPECT_FALSE(setup.SetSetupString(bad)) << bad;
        EXPECT_EQ(setup.GetSetupString(), "SQ4|n|0|1") << bad;
    }
}

TEST(SequenceSetup, OwnNumberingWithoutStepIsRepairedToOne) {
    EImageOutputSequenceSetup setup(BmpSequence());
    setup.ownNumbering = true;
    setup.step = 0;
    EXPECT_FALSE(setup.IsValid());
    setup.Repair();
    EXPECT_TRUE(setup.IsValid());
    EXPECT_EQ(setup.step, 1);
}

TEST(SequenceSetup, DescriptionShowsTwoExampleNames) {
    EXPECT_EQ(ParsedSetup("SQ4|n|0|1").GetDescription(),
              "Files: name0000.bmp, name0001.bmp, ... (use frame numbers)");
    EXPECT_EQ(ParsedSetup("SQ0|n|0|1").GetDescription(),
              "Files: name0.bmp, name1.bmp, ... (use frame numbers)");
    EXPECT_EQ(ParsedSetup("SQ1|n|0|1").GetDescription(),
              "Files: name0.bmp, name1.bmp, ... (use frame numbers)");
    EXPECT_EQ(ParsedSetup("SQ3|y|100|-5").GetDescription(),
              "Files: name100.bmp, name095.bmp, ... (start with 100 and step on by -5)");
}

TEST(SequenceWriter, PatternCarriesTheDigits) {
    const std::string name = "/data/out.final.bmp";
    auto pattern = [&](const char* text) {
        const EImageOutputSequenceSetup setup = ParsedSetup(text);
        return EImageOutputSequenceWriter(BmpSequence(), name, &setup).GetPattern();
    };
    EXPECT_EQ(pattern("SQ0|n|0|1"), "/data/out.final%ld.bmp");
    EXPECT_EQ(pattern("SQ1|n|0|1"), "/data/out.final%ld.bmp");
    EXPECT_EQ(pattern("SQ5|n|0|1"), "/data/out.final%05ld.bmp");
    EXPECT_EQ(EImageOutputSequenceWriter(BmpSequence(), "noextension", nullptr).GetPattern(),
              "noextension%04ld");
}

TEST(SequenceWriter, NumbersFilesByFrameOrByOwnNumbering) {
    const std::string directory = EmptyDirectory("numbering");
    auto picture = MakeNoise(2, 2, 1);
    EImageOutputError error;

    EImageOutputSequenceWriter byFrame(BmpSequence(), directory + "/f.bmp", nullptr);
    EXPECT_TRUE(byFrame.Write(*picture, 7, error));
    EXPECT_TRUE(std::filesystem::exists(directory + "/f0007.bmp"));

    const EImageOutputSequenceSetup own = ParsedSetup("SQ2|y|10|-3");
    EImageOutputSequenceWriter numbered(BmpSequence(), directory + "/g.bmp", &own);
    EXPECT_TRUE(numbered.Write(*picture, 2, error));
    EXPECT_TRUE(std::filesystem::exists(directory + "/g04.bmp"));
    EXPECT_TRUE(numbered.Write(*picture, 5, error));
    EXPECT_TRUE(std::filesystem::exists(directory + "/g-5.bmp"));
    EXPECT_TRUE(numbered.Close(error));
}

TEST(SequenceWriter, PercentSignsInTheNameMisformatWithoutHarm) {
    const std::string directory = EmptyDirectory("percent");
    auto picture = MakeNoise(1, 1, 1);
    EImageOutputError error;
    EImageOutputSequenceWriter writer(BmpSequence(), directory + "/a%s%d%%b.bmp", nullptr);
    EXPECT_TRUE(writer.Write(*picture, 3, error));
    EXPECT_TRUE(std::filesystem::exists(directory + "/a%s3%b0003.bmp"));
}

} // namespace
