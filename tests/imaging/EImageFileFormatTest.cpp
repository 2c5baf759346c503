#include "ImagingTestSupport.h"

#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"

#include <gtest/gtest.h>

namespace {

// A format that answers every load with a picture of the size asked for, or
// throws a file error when the file holds nothing.
class FakeFormat : public EImageFileFormat {
public:
    FakeFormat(std::string formatName, std::string formatExtension)
        : EImageFileFormat(std::move(formatName), std::move(formatExtension)) {}

protected:
    std::unique_ptr<EImageData> doLoad(EBinaryFile& file, const CRect& rect, EImageFileResult&) override {
        char byte;
        file.Read(&byte, 1);
        const CRect part = ClipLoadRect(rect, {10, 10});
        return EImageData::New({part.Width(), part.Height()}, EImageMemory::NoFreeing);
    }
    bool doQueryFileInfo(EBinaryFile&, EImageFileInfo& info, EImageFileResult&) override {
        info.size = {10, 10};
        return true;
    }
};

} // namespace

TEST(ImageFileFormat, FindsFormatsByExtensionWithoutRegardToCase) {
    EImageFileFormat* quick = EImageFileFormat::Find("QtS");
    ASSERT_NE(quick, nullptr);
    EXPECT_EQ(quick->GetName(), "qvrTessarine Quick file");
    EXPECT_EQ(quick->GetExtension(), "qts");
    EXPECT_EQ(EImageFileFormat::FindForFile("/a.b/c/proxy.QTS"), quick);
    EXPECT_EQ(EImageFileFormat::Find("bmp"), nullptr);
    EXPECT_EQ(EImageFileFormat::FindForFile("/a.qts/file"), nullptr);
}

TEST(ImageFileFormat, TheLastFormatMadeIsFoundFirstUntilItGoes) {
    {
        FakeFormat older("Older", "fake");
        FakeFormat newer("Newer", "FAKE");
        EXPECT_EQ(EImageFileFormat::Find("fake"), &newer);
    }
    EXPECT_EQ(EImageFileFormat::Find("fake"), nullptr);
    EXPECT_NE(EImageFileFormat::Find("qts"), nullptr);
}

TEST(ImageFileFormat, RefusesBadCallsUnknownFormatsAndUnreadableFiles) {
    FakeFormat format("Fake", "fake");
    EImageFileResult result;
    EXPECT_FALSE(EImageFileFormat::Load("", {}, result));
    EXPECT_EQ(result.number, EImageFileError::BadFunctionCall);
    EXPECT_EQ(result.text, "Bad function call; please contact author");

    const std::string file = qvrTest::ScratchFile("registry.fake");
    qvrTest::WriteBytes(file, {1});
    EXPECT_FALSE(EImageFileFormat::Load(file, {10, 10, 10, 20}, result));
    EXPECT_EQ(result.number, EImageFileError::BadFunctionCall);

    EXPECT_FALSE(EImageFileFormat::Load(qvrTest::ScratchFile("registry.unknown"), {}, result));
    EXPECT_EQ(result.text, "Unknown file format");

    EXPECT_FALSE(EImageFileFormat::Load(qvrTest::ScratchFile("missing.fake"), {}, result));
    EXPECT_EQ(result.number, EImageFileError::ReadError);
    EXPECT_EQ(result.text, "Error while reading file");

    qvrTest::WriteBytes(file, {}); // the format's read runs past the end
    result = {};
    EXPECT_FALSE(EImageFileFormat::Load(file, {}, result));
    EXPECT_EQ(result.text, "Error while reading file");

    auto picture = EImageData::New({1, 1}, EImageMemory::NoFreeing);
    EXPECT_FALSE(EImageFileFormat::Save(*picture, file, result)); // this format can't write
    EXPECT_EQ(result.number, EImageFileError::BadFunctionCall);
}

TEST(ImageFileFormat, LoadsTheWholePictureOrAClippedPart) {
    FakeFormat format("Fake", "fake");
    const std::string file = qvrTest::ScratchFile("clip.fake");
    qvrTest::WriteBytes(file, {1});
    EImageFileResult result;
    EImageFileInfo info;
    ASSERT_TRUE(EImageFileFormat::QueryFileInfo(file, info, result));
    EXPECT_EQ(info.size, (CSize{10, 10}));
    auto whole = EImageFileFormat::Load(file, {0, 0, 0, 0}, result);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->GetSize(), (CSize{10, 10}));
    auto part = EImageFileFormat::Load(file, {-3, 4, 12, 6}, result);
    ASSERT_TRUE(part);
    EXPECT_EQ(part->GetSize(), (CSize{10, 2}));
}

TEST(ImageFileFormat, ClipsLoadRectanglesToThePicture) {
    const CSize size{100, 50};
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({0, 0, 0, 0}, size), (CRect{0, 0, 100, 50}));
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({-5, -5, 10, 10}, size), (CRect{0, 0, 10, 10}));
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({90, 40, 200, 200}, size), (CRect{90, 40, 100, 50}));
    EXPECT_EQ(EImageFileFormat::ClipLoadRect({150, 70, 200, 80}, size), (CRect{100, 50, 100, 50}));
}
