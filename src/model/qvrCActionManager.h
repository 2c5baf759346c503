#pragma once
// Undo and redo: operations that can be taken back are action objects kept in
// two chains. A new action clears the redo chain; an undone one moves to the
// redo chain and back. A step that can't be taken back or repeated empties
// its chain, as every step behind it rests on the state it would have made.
// The manager owns every action in its chains. User-interface thread only.

#include <string>

class qvrCActionManager;

class qvrCAction {
public:
    enum State : int { in_no_chain = 0, in_undo_chain = 1, in_redo_chain = 2 };

    qvrCAction() = default;
    // Leaves the chain its state names.
    virtual ~qvrCAction();
    qvrCAction(const qvrCAction&) = delete;
    qvrCAction& operator=(const qvrCAction&) = delete;

    virtual std::string GetTitle() const = 0;
    virtual bool Do() = 0;
    virtual bool Undo() = 0;
    virtual bool Redo() = 0;

    int GetState() const { return state; }

private:
    friend class qvrCActionManager;

    qvrCActionManager* manager = nullptr;
    qvrCAction* older = nullptr;
    qvrCAction* newer = nullptr;
    int state = in_no_chain;
};

class qvrCActionManager {
public:
    qvrCActionManager() = default;
    ~qvrCActionManager();
    qvrCActionManager(const qvrCActionManager&) = delete;
    qvrCActionManager& operator=(const qvrCActionManager&) = delete;

    // Runs a new action; on success the manager owns it. On failure the
    // caller keeps it (and deletes it) and the chains stay as they were.
    bool Do(qvrCAction* action);
    bool Undo();
    bool Redo();
    void ClearUndo();
    void ClearRedo();

    bool CanUndo() const { return undo.newest != nullptr; }
    bool CanRedo() const { return redo.newest != nullptr; }
    // The titles for the menu; empty when the chain is empty.
    std::string GetUndoTitle() const;
    std::string GetRedoTitle() const;
    long GetUndoCount() const { return undo.count; }
    long GetRedoCount() const { return redo.count; }

    // The most actions kept on the undo chain; 0 means no limit.
    void SetMaxActions(unsigned maximum) { maxActions = maximum; }
    unsigned GetMaxActions() const { return maxActions; }

protected:
    // After a push on the undo chain: trims the chain to maxActions.
    virtual void OnActionDone(bool isNew);

private:
    friend class qvrCAction;

    struct Chain {
        qvrCAction* newest = nullptr;
        qvrCAction* oldest = nullptr;
        long count = 0;
    };

    void pushUndo(qvrCAction* action, bool isNew);
    static void linkNewest(Chain& chain, qvrCAction* action, int state);
    static void unlink(Chain& chain, qvrCAction* action);
    Chain& chainOf(int state) { return state == qvrCAction::in_undo_chain ? undo : redo; }
    // Takes the newest action off `from`, runs `step`, and on success hands it to `onSuccess`.
    template <class Step, class OnSuccess>
    bool takeBack(Chain& from, Step step, const char* failureFormat, OnSuccess onSuccess);
    static void clearChain(Chain& chain);

    Chain undo;
    unsigned maxActions = 0;
    Chain redo;
};
