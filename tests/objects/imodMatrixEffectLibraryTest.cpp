#include "../foundation/ScratchDirectory.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "objects/imodMatrixEffect.h"
#include "objects/imodMatrixEffectLibrary.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

hMatrix Sharpen() {
    hMatrix matrix;
    matrix.SetEntry(2, 2, 5 * 1024);
    for (auto [x, y] : {std::pair{1, 2}, {3, 2}, {2, 1}, {2, 3}})
        matrix.SetEntry(x, y, -1024);
    return matrix;
}

class EffectLibrary : public ::testing::Test {
protected:
    ~EffectLibrary() override { library.DeleteAll(); }
    imodMatrixEffectLibrary& library = imodMatrixEffectLibrary::Get();
};

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace

TEST_F(EffectLibrary, EffectsAreFoundWithoutRegardToCaseAndNamesStayUnique) {
    imodMatrixEffect* sharpen = library.Add("Sharpen", Sharpen());
    ASSERT_NE(sharpen, nullptr);
    EXPECT_EQ(library.Find("SHARPEN"), sharpen);
    EXPECT_EQ(library.Add("sharpen", hMatrix()), nullptr);
    EXPECT_EQ(library.Add("", hMatrix()), nullptr);
    imodMatrixEffect* blur = library.Add("Blur", hMatrix());
    EXPECT_FALSE(library.Rename(*blur, "SHARPEN"));
    EXPECT_TRUE(library.Rename(*sharpen, "Edges"));
    EXPECT_EQ(library.GetEffects(), (std::vector<imodMatrixEffect*>{blur, sharpen}));
    EXPECT_EQ(library.Find("Sharpen"), nullptr);
}

TEST_F(EffectLibrary, PreferenceBlockKeepsEachEffectAndDropsBrokenOnes) {
    library.Add("Sharpen", Sharpen());
    library.Add("Copy", hMatrix());
    qvrCTreeData block;
    hReportRoot report("prefs");
    library.Save(block, report);
    ASSERT_NE(block.Find("EffectMatrix \"Sharpen\""), nullptr);
    EXPECT_EQ(*block.Find("EffectMatrix \"Sharpen\"")->GetText("Entry[12]"), "-1");

    block.CreateChild("EffectMatrix \"Broken\"")->SetText("Divisor", "1");
    block.CreateChild("Stray");
    library.Reset();
    EXPECT_TRUE(library.GetEffects().empty());
    library.Load(block, report);
    ASSERT_NE(library.Find("Sharpen"), nullptr);
    EXPECT_EQ(library.Find("Sharpen")->GetMatrix(), Sharpen());
    EXPECT_EQ(library.GetEffects().size(), 2u);
    std::vector<std::string> texts;
    for (const hReportEntry& entry : report.GetEntries())
        texts.push_back(entry.Text);
    EXPECT_EQ(texts, (std::vector<std::string>{"Matrix definition incomplete.",
                                               "Cannot add effect matrix \"Broken\" !",
                                               "Cannot add effect matrix \"Stray\" !"}));
}

TEST_F(EffectLibrary, EffectFilesCarryTheKernelAndRefuseIncompleteOnes) {
    ScratchDirectory scratch("mfx");
    imodMatrixEffect* sharpen = library.Add("Sharpen", Sharpen());
    imodMatrixEffect* other = library.Add("Other", hMatrix());
    hReportRoot report("files");
    ASSERT_TRUE(sharpen->SaveFile(scratch.File("sharpen.mfx"), report));
    const std::string text = ScratchDirectory::ReadAll(scratch.File("sharpen.mfx"));
    EXPECT_EQ(text.rfind("; qvrTessarine database", 2), 2u);
    ASSERT_TRUE(other->LoadFile(scratch.File("sharpen.mfx"), report));
    EXPECT_EQ(other->GetMatrix(), Sharpen());
    EXPECT_EQ(report.GetCount(), 0);

    // A section named after the effect is read as well.
    std::string named = text;
    WriteText(scratch.File("named.mfx"),
              named.replace(named.find("Effect"), 6, qvrCTreeData::ExpandName("Effect \"Other\"")));
    other->SetMatrix(hMatrix());
    EXPECT_TRUE(other->LoadFile(scratch.File("named.mfx"), report));
    EXPECT_EQ(other->GetMatrix(), Sharpen());

    std::string incomplete = text;
    WriteText(scratch.File("incomplete.mfx"), incomplete.erase(incomplete.find("Entry[00]"), 9));
    WriteText(scratch.File("garbage.mfx"), "not a matrix at all\n");
    other->SetMatrix(hMatrix());
    for (const char* name : {"incomplete.mfx", "garbage.mfx", "missing.mfx"})
        EXPECT_FALSE(other->LoadFile(scratch.File(name), report)) << name;
    EXPECT_EQ(other->GetMatrix(), hMatrix());
    EXPECT_FALSE(sharpen->SaveFile(scratch.File("no/such/dir.mfx"), report));
}
