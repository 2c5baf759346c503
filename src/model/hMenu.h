#pragma once
// A popup menu as the core describes it, without a toolkit: items with a
// command id, text and marks, separators, and sub-menus. The front end turns it
// into a real menu and answers with the chosen id (iObjectFrontEnd). A menu
// belongs to the thread that builds it.

#include <memory>
#include <string>
#include <vector>

class hMenu;

struct hMenuItem {
    unsigned Id = 0; // 0 for a separator or a sub-menu
    std::string Text;
    bool Checked = false;
    bool Default = false;
    bool Enabled = true;
    std::shared_ptr<hMenu> SubMenu; // set for a sub-menu
    bool IsSeparator() const { return Id == 0 && !SubMenu; }
};

class hMenu {
public:
    // Appends an item and returns it, so that the caller can mark it.
    hMenuItem& AppendItem(unsigned id, std::string text);
    void AppendSeparator();
    // Appends a sub-menu under the text and returns it for filling.
    hMenu& AppendSubMenu(std::string text);

    const std::vector<hMenuItem>& GetItems() const { return Items; }
    // The item with the id, here or in a sub-menu, or null.
    const hMenuItem* FindItem(unsigned id) const;
    bool IsEmpty() const { return Items.empty(); }

private:
    std::vector<hMenuItem> Items;
};
