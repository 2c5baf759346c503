// Undoing and redoing the delete of 500 linked elements with 10 keyed values each.

#include "model/Action.h"
#include "model/iFactory.h"
#include "model/iProject.h"
#include "model/iSource.h"

#include <benchmark/benchmark.h>

#include <array>

namespace {

// An element with ten animated values, standing for a typical object of a project.
class TenValueNode : public iSource {
public:
    explicit TenValueNode(std::string name) : iSource(std::move(name)) {
        for (size_t i = 0; i < values.size(); ++i)
            values[i] = std::make_unique<iActiveValue>(this, "Value " + std::to_string(i), 0.0, false);
    }
    iFactoryProducer* GetProducer() const override { return &Producer; }
    int GetMaxParents() const override { return 2; }
    std::array<std::unique_ptr<iActiveValue>, 10> values;
    static iFactoryProducerType ClassType;
    static iFactoryProducerOf<TenValueNode> Producer;
};
iFactoryProducerType TenValueNode::ClassType("Bench");
iFactoryProducerOf<TenValueNode> TenValueNode::Producer(TenValueNode::ClassType, "Ten");

std::vector<std::string> buildChain(iProject& project, int count) {
    std::vector<std::string> names;
    TenValueNode* previous = nullptr;
    for (int i = 0; i < count; ++i) {
        auto* node = static_cast<TenValueNode*>(
            project.Adopt(std::make_unique<TenValueNode>("Node " + std::to_string(i))));
        for (auto& value : node->values)
            for (long frame = 0; frame < 100; frame += 10)
                value->SetKey(frame, double(frame + i), true, false, false);
        if (previous) node->LinkParent(previous);
        previous = node;
        names.push_back(node->GetName());
    }
    return names;
}

void UndoRedoDeleteOf500Elements(benchmark::State& state) {
    iFactoryProducerType::GlobalInit();
    iProject project;
    std::vector<std::string> names = buildChain(project, 500);
    qvrCActionManager& manager = project.GetActionManager();
    manager.Do(new Action_iElementDeleteMulti(project, names));
    for (auto _ : state) {
        bool undone = manager.Undo();
        bool redone = manager.Redo();
        if (!undone || !redone) state.SkipWithError("undo or redo failed");
    }
    project.Clear();
    iFactoryProducerType::GlobalRem();
}
BENCHMARK(UndoRedoDeleteOf500Elements)->Unit(benchmark::kMillisecond);

} // namespace
