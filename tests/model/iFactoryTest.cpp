#include "model/iFactory.h"
#include "foundation/TraceCapture.h"
#include "model/TestElements.h"

#include <gtest/gtest.h>

namespace {

struct Factory : ::testing::Test {
    void SetUp() override { iFactoryProducerType::GlobalInit(); }
    void TearDown() override { iFactoryProducerType::GlobalRem(); }
};

} // namespace

TEST_F(Factory, KeysAreComparedWithoutRegardToCase) {
    std::unique_ptr<iElement> element = iFactory::Get().Produce("test", "NODE", "Made");
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->GetName(), "Made");
    EXPECT_EQ(element->GetElementClass(), "Test");
    EXPECT_EQ(element->GetElementType(), "Node");
    EXPECT_EQ(element->GetProject(), nullptr);
}

TEST_F(Factory, UnknownClassOrTypeGivesNothing) {
    TraceCapture trace;
    EXPECT_EQ(iFactory::Get().Produce("Nothing", "Node", "x"), nullptr);
    EXPECT_EQ(iFactory::Get().Produce("Test", "Nothing", "x"), nullptr);
    EXPECT_TRUE(trace.Contains("*** NOTE[iFactory::Produce()]: Can't create an object of class Nothing, type "
                               "Node: No such class type.\n"));
    EXPECT_TRUE(trace.Contains("*** WARNING[iFactoryProducerType::Produce()]: Can't produce element of class "
                               "Test, type Nothing: Class not existent.\n"));
}

TEST_F(Factory, ElementsWithoutNameAreNumberedInSequence) {
    const long before = TestNode::Producer.GetCounter();
    auto first = iFactory::Get().Produce("Test", "Node", "");
    first.reset();
    auto second = TestNode::Producer.Produce();
    EXPECT_EQ(second->GetName(), "Node." + std::to_string(before + 2));
}

TEST_F(Factory, ProducersJoinTheirClassTypeAndLeaveAgain) {
    iFactoryProducerType* modifiers = iFactory::Get().FindType("Modifier");
    ASSERT_NE(modifiers, nullptr);
    EXPECT_EQ(modifiers->FindProducer("test modifier"), &TestModifier::Producer);
    iFactoryProducerType::GlobalRem();
    EXPECT_TRUE(modifiers->GetProducers().empty());
    EXPECT_EQ(iFactory::Get().FindType("Modifier"), nullptr);
    iFactoryProducerType::GlobalInit();
    EXPECT_EQ(modifiers->FindProducer("Test Modifier"), &TestModifier::Producer);
}
