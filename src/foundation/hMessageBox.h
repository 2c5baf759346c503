#pragma once
// The program's message box, with an "always answer this way" memory. A box
// with memory (a non-zero MessageId) is a static descriptor that lists itself;
// when its `Always` is set the box doesn't show and the call's default answer
// is returned at once. The flags are kept in the "Messages" section of the
// preferences as "ID#<MessageId>". Boxes are shown from the main thread; the
// flags are guarded by the section's lock.

#include "foundation/EPrefs.h"
#include "foundation/EStringTable.h"

#include <string>

class hMessageBox {
public:
    enum Type : unsigned {
        OK = 0,
        OKCancel = 1,
        AbortRetryIgnore = 2,
        YesNoCancel = 3,
        YesNo = 4,
        RetryCancel = 5,
        KindMask = 0x0F,
        IconStop = 0x10,
        IconQuestion = 0x20,
        IconExclamation = 0x30,
        IconInformation = 0x40,
        IconMask = 0xF0,
        DefaultSecond = 0x100,
        DefaultThird = 0x200,
        DefaultMask = 0xF00
    };

    // A descriptor; `messageId` 0 makes a box without memory, which doesn't list itself.
    hMessageBox(long messageId, long titleId);
    ~hMessageBox();
    hMessageBox(const hMessageBox&) = delete;
    hMessageBox& operator=(const hMessageBox&) = delete;

    // Shows the box (unless its memory says always) and returns the pressed button's id.
    int Message(const std::string& text, unsigned type, const std::string& title);
    // Shows this descriptor's own texts from the string table.
    int Message(unsigned type);
    // A one-off box without memory.
    static int Show(const std::string& text, unsigned type, const std::string& title);

    static hMessageBox* FindById(long messageId);
    static hMessageBox* GetFirst();
    // Clears the memory of every descriptor.
    static void ClearAllAlways();

    std::string Text;
    std::string Title;
    long MessageId;
    long TitleId;
    bool Always = false;
    hMessageBox* Next = nullptr;
};

// "Messages": the memory of every box that has one.
class EPrefs_hMsg : public EPrefsSection {
public:
    EPrefs_hMsg();
    static EPrefs_hMsg& Get();

protected:
    void LoadExtra(qvrCTreeData& block, hReport& report) override;
    void SaveExtra(qvrCTreeData& block, hReport& report) override;
    void ResetExtra() override;
};
