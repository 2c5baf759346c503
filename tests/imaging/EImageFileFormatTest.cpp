#include "ImagingTestSupport.h"

#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

namespace {

// A format of 10x10 pictures that reads one byte of its file.
class FakeFormat : public EImageFileFormat {
public:
    explicit FakeFormat(std::string formatName) : EImageFileFormat(std::move(formatName), "fake") {}

protected:
    std::unique_ptr<EImageData> doLoad(EBinaryFile& file, const CRect& rect, EImageFileResult&) override {
        char byte;
        file.Read(&byte, 1);
        const CRect part = ClipLoadRect(rect, {10, 10});
        return EImageData::New({part.Width(), part.Height()}, EImageMemory::NoFreeing);
    }
    bool doQueryFileInfo(EBinaryFile&, EImageFileInfo&, EImageFileResult&) override { return true; }
};

} // namespace

TEST(ImageFileFormat, FindsTheLastMadeFormatByExtensionWithoutRegardToCase) {
    EXPECT_EQ(EImageFileFormat::Find("QtS")->GetName(), "qvrTessarine Quick file");
    EXPECT_EQ(EImageFileFormat::FindForFile("/a.b/proxy.QTS"), EImageFileFormat::Find("qts"));
    EXPECT_EQ(EImageFileFormat::FindForFile("/a.qts/file"), nullptr);
    {
        FakeFormat older("Older");
        FakeFormat newer("Newer");
        EXPECT_EQ(EImageFileFormat::Find("FAKE"), &newer);
    }
    EXPECT_EQ(EImageFileFormat::Find("fake"), nullptr);
}

TEST(ImageFileFormat, LoadsClippedPartsAndReportsEveryKindOfFailure) {
    FakeFormat format("Fake");
    const std::string file = qvrTest::ScratchFile("registry.fake");
    qvrTest::WriteBytes(file, {1});
    EImageFileResult result;
    EXPECT_EQ(EImageFileFormat::Load(file, {-3, 4, 12, 6}, result)->GetSize(), (CSize{10, 2}));

    auto fails = [&](const std::string& name, const CRect& rect) {
        result = {};
        EXPECT_FALSE(EImageFileFormat::Load(name, rect, result));
        return result.text;
    };
    EXPECT_EQ(fails("", {}), "Bad function call; please contact author");
    EXPECT_EQ(fails(file, {10, 10, 10, 20}), "Bad function call; please contact author");
    EXPECT_EQ(fails(qvrTest::ScratchFile("x.unknown"), {}), "Unknown file format");
    EXPECT_EQ(fails(qvrTest::ScratchFile("missing.fake"), {}), "Error while reading file");
    qvrTest::WriteBytes(file, {});
    EXPECT_EQ(fails(file, {}), "Error while reading file");
    EXPECT_EQ(result.number, EImageFileError::ReadError);
    EXPECT_FALSE(EImageFileFormat::Save(*EImageData::New({1, 1}, EImageMemory::NoFreeing), file, result));
    EXPECT_EQ(result.number, EImageFileError::BadFunctionCall); // this format can't write
}

TEST(ImageFileFormat, ClipsLoadRectanglesToThePicture) {
    const CSize size{100, 50};
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({0, 0, 0, 0}, size), (CRect{0, 0, 100, 50}));
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({-5, -5, 10, 10}, size), (CRect{0, 0, 10, 10}));
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({150, 70, 200, 80}, size), (CRect{100, 50, 100, 50}));
}
