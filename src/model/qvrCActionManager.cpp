#include "model/qvrCActionManager.h"

#include "foundation/qvrTrace.h"

qvrCAction::~qvrCAction() {
    if (manager && state != in_no_chain) qvrCActionManager::unlink(manager->chainOf(state), this);
}

qvrCActionManager::~qvrCActionManager() {
    ClearUndo();
    ClearRedo();
}

void qvrCActionManager::linkNewest(Chain& chain, qvrCAction* action, int state) {
    action->older = chain.newest;
    action->newer = nullptr;
    (chain.newest ? chain.newest->newer : chain.oldest) = action;
    chain.newest = action;
    action->state = state;
    ++chain.count;
}

void qvrCActionManager::unlink(Chain& chain, qvrCAction* action) {
    (action->older ? action->older->newer : chain.oldest) = action->newer;
    (action->newer ? action->newer->older : chain.newest) = action->older;
    action->older = action->newer = nullptr;
    action->state = qvrCAction::in_no_chain;
    --chain.count;
}

void qvrCActionManager::clearChain(Chain& chain) {
    while (qvrCAction* action = chain.newest)
        delete action;
    chain.count = 0;
}

void qvrCActionManager::ClearUndo() {
    clearChain(undo);
}
void qvrCActionManager::ClearRedo() {
    clearChain(redo);
}

void qvrCActionManager::pushUndo(qvrCAction* action, bool isNew) {
    if (isNew) ClearRedo();
    action->manager = this;
    linkNewest(undo, action, qvrCAction::in_undo_chain);
    OnActionDone(isNew);
}

void qvrCActionManager::OnActionDone(bool isNew) {
    if (!isNew || maxActions == 0) return;
    while (undo.count > static_cast<long>(maxActions)) {
        qvrTrace("*** NOTE[qvrCActionManager::OnActionDone()]: We have %ld of a maximum of %ld actions - we "
                 "delete "
                 "one...\n",
                 undo.count, static_cast<long>(maxActions));
        delete undo.oldest;
    }
}

bool qvrCActionManager::Do(qvrCAction* action) {
    if (!action || action->state != qvrCAction::in_no_chain) return false;
    if (!action->Do()) {
        qvrTrace("*** WARNING[qvrCActionManager::Do()]: Failed to executed action \"%s\".\n",
                 action->GetTitle().c_str());
        return false;
    }
    pushUndo(action, true);
    return true;
}

template <class Step, class OnSuccess>
bool qvrCActionManager::takeBack(Chain& from, Step step, const char* failureFormat, OnSuccess onSuccess) {
    qvrCAction* action = from.newest;
    if (!action) return false;
    unlink(from, action);
    if (action->manager != this) {
        delete action;
        clearChain(from);
        return false;
    }
    if (!step(*action)) {
        qvrTrace(failureFormat, action->GetTitle().c_str());
        clearChain(from);
        delete action;
        return false;
    }
    onSuccess(action);
    return true;
}

bool qvrCActionManager::Undo() {
    return takeBack(
        undo, [](qvrCAction& action) { return action.Undo(); },
        "*** WARNING[qvrCActionManager::Undo()]: Undoing \"%s\" failed - undo chain will be emptied.\n",
        [this](qvrCAction* action) { linkNewest(redo, action, qvrCAction::in_redo_chain); });
}

bool qvrCActionManager::Redo() {
    return takeBack(
        redo, [](qvrCAction& action) { return action.Redo(); },
        "*** WARNING[qvrCActionManager::Redo()]: Redoing \"%s\" failed - redo chain will be emptied.\n",
        [this](qvrCAction* action) { pushUndo(action, false); });
}

std::string qvrCActionManager::GetUndoTitle() const {
    return undo.newest ? undo.newest->GetTitle() : std::string();
}
std::string qvrCActionManager::GetRedoTitle() const {
    return redo.newest ? redo.newest->GetTitle() : std::string();
}
