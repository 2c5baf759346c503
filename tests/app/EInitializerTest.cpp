#include "app/EInitializer.h"
#include "foundation/qvrTrace.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

class Journal {
public:
    std::vector<std::string> Events;
};

class TestComponent : public EInitializer {
public:
    TestComponent(Journal& journal, EStringId id, EStringId dependency, EInitializerList& list,
                  bool succeeds = true)
        : EInitializer(id, dependency, list), Log(journal), Succeeds(succeeds) {}
    bool OnInit(EInitializerStatus&) override {
        Log.Events.push_back("init " + std::to_string(NameId));
        return Succeeds;
    }
    void OnExit(EInitializerStatus&) override { Log.Events.push_back("exit " + std::to_string(NameId)); }

private:
    Journal& Log;
    bool Succeeds;
};

class TraceCapture {
public:
    TraceCapture() {
        qvrSetTraceSink([this](const std::string& line) { Text += line; });
    }
    ~TraceCapture() { qvrSetTraceSink({}); }
    std::string Text;
};

// Components are listed at the head, so the last one made starts first.
struct Fixture {
    Journal journal;
    EInitializerList list;
    std::vector<std::unique_ptr<TestComponent>> components;
    void add(EStringId id, EStringId dependency, bool succeeds = true) {
        components.push_back(std::make_unique<TestComponent>(journal, id, dependency, list, succeeds));
    }
};

} // namespace

TEST(Initializer, IndependentComponentsStartFirstAndEndInReverse) {
    Fixture f;
    f.add(3, 1);
    f.add(2, 0);
    f.add(1, 0);
    EInitializerStatus status;
    ASSERT_TRUE(f.list.DoInitInstance(status));
    f.list.DoExitInstance(status);
    EXPECT_EQ(f.journal.Events,
              (std::vector<std::string>{"init 1", "init 2", "init 3", "exit 3", "exit 2", "exit 1"}));
}

TEST(Initializer, AWaitingComponentLetsAllLaterOnesOvertakeIt) {
    Fixture f;
    f.add(30, 0);
    f.add(23, 30); // waits for nothing
    f.add(22, 21); // made before 21, so listed after it
    f.add(21, 30);
    f.add(20, 22); // head of the list, needs 22
    TraceCapture trace;
    EInitializerStatus status;
    ASSERT_TRUE(f.list.DoInitInstance(status));
    EXPECT_EQ(f.journal.Events,
              (std::vector<std::string>{"init 30", "init 21", "init 22", "init 23", "init 20"}));
    EXPECT_NE(trace.Text.find(" : Dependency not initialized yet; continuing with dependency.\n"),
              std::string::npos);
}

TEST(Initializer, SharedIdsAreSatisfiedByTheFirstStarted) {
    Fixture f;
    f.add(5, 4);
    f.add(4, 0);
    f.add(4, 0);
    EInitializerStatus status;
    ASSERT_TRUE(f.list.DoInitInstance(status));
    EXPECT_EQ(f.journal.Events.back(), "init 5");
}

TEST(Initializer, AnUnknownDependencyStopsTheStart) {
    Fixture f;
    f.add(7, 99);
    f.add(6, 0);
    TraceCapture trace;
    EInitializerStatus status;
    EXPECT_FALSE(f.list.DoInitInstance(status));
    EXPECT_NE(trace.Text.find("Cannot resolve dependency"), std::string::npos);
    f.list.DoExitInstance(status);
    EXPECT_EQ(f.journal.Events, (std::vector<std::string>{"init 6", "exit 6"}));
}

TEST(Initializer, AFailingComponentEndsTheStartAndIsNotEnded) {
    Fixture f;
    f.add(3, 0);
    f.add(2, 0, false);
    f.add(1, 0);
    EInitializerStatus status;
    EXPECT_FALSE(f.list.DoInitInstance(status));
    f.list.DoExitInstance(status);
    EXPECT_EQ(f.journal.Events, (std::vector<std::string>{"init 1", "init 2", "exit 1"}));
}

TEST(Initializer, TheProgramsComponentsStartInTheirFixedOrder) {
    TraceCapture trace;
    EInitializerStatus status;
    ASSERT_TRUE(EInitializer::DoInitInstance(status));
    EInitializer::DoExitInstance(status);
    const char* expected[] = {
        " > Initializing VITREA:18 saver... (no dependency)\n",
        " > Initializing VITREA:18 saver... (no dependency)\n",
        " > Initializing VITREA:18 saver... (no dependency)\n",
        " > Setting up qvrTessarine OLE data formats... (no dependency)\n",
        " > Setting up matrix modifier effects... (no dependency)\n",
        " > Reading qvrTessarine component library (internal)... (no dependency)\n",
        " > Initializing component data... (no dependency)\n",
        " > Initializing program database... (no dependency)\n",
        " > Loading user interface image data... (no dependency)\n",
        " > Setting up globally used data... (no dependency)\n",
        " > Analysing current Windows subsystem environment... (no dependency)\n",
        " > Setting up language localization... (no dependency)\n",
        " > Initializing customized message boxes... (Setting up globally used data...)\n",
        " > Initializing global log file... (Analysing current Windows subsystem environment...)\n",
        " > Loading proxy configuration... (Analysing current Windows subsystem environment...)\n",
        " > Loading available AVI compressors... (Initializing global log file...)\n",
        " > Initializing batch processor... (Initializing global log file...)\n",
        " Components loaded.\n",
        "\nRemoving EInitializer components (in reverse initialization order):\n",
        " > Initializing batch processor...\n",
    };
    size_t position = 0;
    for (const char* line : expected) {
        size_t found = trace.Text.find(line, position);
        ASSERT_NE(found, std::string::npos) << line;
        position = found + 1;
    }
}
