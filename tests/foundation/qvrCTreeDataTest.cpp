#include "foundation/qvrCTreeData.h"
#include "foundation/qvrCTextFile.h"

#include <gtest/gtest.h>

namespace {

struct RecordedProblem {
    long line;
    std::string context;
    int code;
};

class RecordingReport : public qvrCTreeDataReport {
public:
    void OnBlockStart(qvrCTextFile&, long) override { ++blocks; }
    void OnBadFormat(qvrCTextFile&, long line, const std::string& context, int code) override {
        problems.push_back({line, context, code});
    }
    void OnNodeSaved(qvrCTextFile&, const qvrCTreeData&) override {}
    int blocks = 0;
    std::vector<RecordedProblem> problems;
};

std::string saveToText(const qvrCTreeData& root) {
    qvrCMemoryTextFile file;
    root.Save(file, "   ", nullptr);
    return file.GetText();
}

qvrCTreeData::LoadResult loadFromText(const std::string& text, qvrCTreeData& root,
                                      qvrCTreeDataReport* report = nullptr) {
    qvrCMemoryTextFile file(text);
    long lines = 0;
    return root.Load(file, lines, false, report);
}

} // namespace

TEST(TreeData, WritesTheDocumentedShapeWithExactIndents) {
    qvrCTreeData root("Project", "V1.10");
    root.SetLong("Child", 12);
    qvrCTreeData* sub = root.CreateChild("Sub");
    sub->SetText("Name with blanks", "a value");
    EXPECT_EQ(saveToText(root), "   Project = V1.10\n"
                                "    {\n"
                                "      Child := 12\n"
                                "      Sub =\n"
                                "       {\n"
                                "         Name$_with$_blanks := a$_value\n"
                                "       } <Sub>\n"
                                "    } <Project>\n");
}

TEST(TreeData, SpecialCharactersInNamesAndValuesComeBackExactly) {
    qvrCTreeData root("Root");
    const std::string name = "a $b\tc\nd\re=f;g{h}i\\j";
    const std::string value = "x $y\tz\nw\rv=u;{}\\";
    root.SetText(name, value);
    root.SetText("empty", "");
    qvrCTreeData loaded;
    EXPECT_EQ(loadFromText(saveToText(root), loaded), qvrCTreeData::NodeDone);
    EXPECT_TRUE(loaded.IsEqual(root));
}

TEST(TreeData, ChildrenComeOutSortedWithoutRegardToCase) {
    qvrCTreeData a("Root");
    qvrCTreeData b("Root");
    for (const char* name : {"beta", "Alpha", "_under", "gamma", "Zulu"})
        a.SetText(name, "1");
    for (const char* name : {"Zulu", "gamma", "_under", "Alpha", "beta"})
        b.SetText(name, "1");
    std::string text = saveToText(a);
    EXPECT_EQ(text, saveToText(b));
    // '_' sorts after the capitals but before the lower-case letters once folded to lower case.
    EXPECT_LT(text.find("Alpha"), text.find("beta"));
    EXPECT_LT(text.find("_under"), text.find("Alpha"));
    EXPECT_LT(text.find("gamma"), text.find("Zulu"));
}

TEST(TreeData, UnknownEscapesAndTrailingDollarStayAsWritten) {
    EXPECT_EQ(qvrCTreeData::CollapseValue("a$xb"), "a$xb");
    EXPECT_EQ(qvrCTreeData::CollapseValue("cost$"), "cost$");
    EXPECT_EQ(qvrCTreeData::CollapseValue("a$Eb"), "a$Eb"); // "=" is escaped only in names
    EXPECT_EQ(qvrCTreeData::CollapseName("a$Eb"), "a=b");
}

TEST(TreeData, ReaderKeepsTheWritersBlankBeforeEquals) {
    qvrCTreeData root;
    loadFromText("Root = \n{\nab = c\n{\n}\nkey := v\nx:=y\nbare\n}\n", root);
    EXPECT_EQ(root.GetName(), "Root");
    // "ab = c" is a block head whose key loses its last character before the blank.
    ASSERT_NE(root.Find("ab"), nullptr);
    EXPECT_EQ(root.Find("ab")->Value, "c");
    EXPECT_EQ(*root.GetText("key"), "v");
    EXPECT_EQ(*root.GetText("x"), "y");
    ASSERT_NE(root.Find("bare"), nullptr);
    EXPECT_EQ(root.Find("bare")->Value, "");
}

TEST(TreeData, HandWrittenKeyWithoutBlankLosesItsLastCharacter) {
    qvrCTreeData root;
    RecordingReport report;
    loadFromText("Root =\n{\na=b\nkey:=1\n}\n", root, &report);
    ASSERT_EQ(report.problems.size(), 1u);
    EXPECT_EQ(report.problems[0].code, qvrCTreeData::InvalidName);
    EXPECT_EQ(report.problems[0].line, 3);
    EXPECT_NE(root.Find("key"), nullptr);
}

TEST(TreeData, BadLinesAreReportedWithTheirCodesAndSkipped) {
    qvrCTreeData root;
    RecordingReport report;
    const std::string text = "}\n"
                             "Root =\n"
                             "garbage\n"
                             "{\n"
                             "  One := 1\n"
                             "  one := 2\n"
                             "  = nameless\n"
                             "}\n";
    EXPECT_EQ(loadFromText(text, root, &report), qvrCTreeData::NodeDone);
    ASSERT_EQ(report.problems.size(), 4u);
    EXPECT_EQ(report.problems[0].code, qvrCTreeData::BlockNeverOpened);
    EXPECT_EQ(report.problems[1].code, qvrCTreeData::GarbageBeforeBlock);
    EXPECT_EQ(report.problems[1].line, 3);
    EXPECT_EQ(report.problems[2].code, qvrCTreeData::NameExists);
    EXPECT_EQ(report.problems[2].line, 5);
    EXPECT_EQ(report.problems[3].code, qvrCTreeData::InvalidName);
    EXPECT_EQ(*root.GetText("one"), "1") << "the first of two equal names wins";
}

TEST(TreeData, TruncatedFileKeepsWhatWasReadAndReportsEndOfFile) {
    qvrCTreeData root;
    RecordingReport report;
    EXPECT_EQ(loadFromText("Root =\n{\n a := 1\n b := 2\n", root, &report), qvrCTreeData::EndOfFile);
    EXPECT_EQ(root.GetChildCount(), 2u);
    ASSERT_FALSE(report.problems.empty());
    EXPECT_EQ(report.problems.back().code, qvrCTreeData::UnexpectedEndOfFile);
}

TEST(TreeData, BinaryGarbageNeverStopsTheReader) {
    std::string garbage;
    for (int i = 0; i < 4096; ++i)
        garbage += static_cast<char>((i * 131 + 7) % 256);
    qvrCTreeData root;
    RecordingReport report;
    loadFromText(garbage, root, &report);
    loadFromText("Root =\n{\n" + garbage + "\n", root, &report);
    SUCCEED();
}

TEST(TreeData, DeeplyNestedBlocksAreCutAtTheLimitAndReportedWithTheirLine) {
    const int levels = 5000;
    std::string text;
    for (int i = 0; i < levels; ++i)
        text += "N =\n{\n";
    for (int i = 0; i < levels; ++i)
        text += "}\n";
    text = "Root =\n{\n" + text + " After := 1\n}\n";
    qvrCTreeData root;
    RecordingReport report;
    EXPECT_EQ(loadFromText(text, root, &report), qvrCTreeData::NodeDone);
    ASSERT_EQ(report.problems.size(), 1u);
    EXPECT_EQ(report.problems[0].code, qvrCTreeData::NestedTooDeeply);
    EXPECT_EQ(report.problems[0].line, 2 * qvrCTreeData::MaxNestingDepth + 1);
    EXPECT_EQ(*root.GetText("After"), "1") << "reading goes on after the skipped block";
    int depth = 0;
    for (const qvrCTreeData* node = root.Find("N"); node; node = node->Find("N"))
        ++depth;
    EXPECT_EQ(depth, qvrCTreeData::MaxNestingDepth);
}

TEST(TreeData, TypedValuesRoundTripAndBadOnesAreHandedBack) {
    qvrCTreeData node("Node");
    node.SetLong("int", -42);
    node.SetBool("flag", true);
    node.SetPoint("point", {3, -4});
    node.SetRect("rect", {1, 2, 3, 4});
    node.SetDescriptor("object", "isrc", "solid", "Layer 1");
    node.SetText("broken", "12x");
    node.SetText("nameless", "a/b/");
    long number = 0;
    bool flag = false;
    CPoint point;
    CRect rect;
    std::string cls, type, name;
    EXPECT_NE(node.GetLong("int", number), nullptr);
    EXPECT_EQ(number, -42);
    EXPECT_NE(node.GetBool("flag", flag), nullptr);
    EXPECT_TRUE(flag);
    EXPECT_NE(node.GetPoint("point", point), nullptr);
    EXPECT_EQ(point, (CPoint{3, -4}));
    EXPECT_NE(node.GetRect("rect", rect), nullptr);
    EXPECT_EQ(rect, (CRect{1, 2, 3, 4}));
    EXPECT_NE(node.GetDescriptor("object", cls, type, name), nullptr);
    EXPECT_EQ(cls + "|" + type + "|" + name, "isrc|solid|Layer 1");
    qvrCTreeData* bad = nullptr;
    EXPECT_EQ(node.GetLong("broken", number, &bad), nullptr);
    EXPECT_EQ(bad, node.Find("broken"));
    EXPECT_EQ(node.GetDescriptor("nameless", cls, type, name, &bad), nullptr);
    EXPECT_NE(bad, nullptr);
    EXPECT_EQ(node.GetLong("missing", number, &bad), nullptr);
    EXPECT_EQ(bad, nullptr);
}

TEST(TreeData, ANodeEmptiedAndFilledAgainFindsOnlyItsNewChildren) {
    qvrCTreeData root("Root");
    root.CreateChild("Kept");
    ASSERT_NE(root.Find("kept"), nullptr); // remembered as the last one found
    root.RemoveAllChildren();
    EXPECT_EQ(root.Find("Kept"), nullptr);
    qvrCTreeData* again = root.CreateChild("Kept");
    EXPECT_EQ(root.Find("kept"), again);
}

TEST(TreeData, RenameKeepsNamesUniqueAndSorted) {
    qvrCTreeData root("Root");
    qvrCTreeData* a = root.CreateChild("a");
    root.CreateChild("b");
    EXPECT_FALSE(a->Rename("B"));
    EXPECT_TRUE(a->Rename("c"));
    EXPECT_EQ(root.Find("c"), a);
    EXPECT_EQ(root.Find("a"), nullptr);
    EXPECT_EQ(root.CreateChild("C", false), nullptr);
    EXPECT_EQ(root.CreateChild("C", true), a);
}
