#include "model/hMenu.h"

hMenuItem& hMenu::AppendItem(unsigned id, std::string text) {
    hMenuItem& item = Items.emplace_back();
    item.Id = id;
    item.Text = std::move(text);
    return item;
}

void hMenu::AppendSeparator() {
    Items.emplace_back();
}

hMenu& hMenu::AppendSubMenu(std::string text) {
    hMenuItem& item = Items.emplace_back();
    item.Text = std::move(text);
    item.SubMenu = std::make_shared<hMenu>();
    return *item.SubMenu;
}

const hMenuItem* hMenu::FindItem(unsigned id) const {
    for (const hMenuItem& item : Items) {
        if (item.Id == id && !item.IsSeparator()) return &item;
        if (item.SubMenu)
            if (const hMenuItem* found = item.SubMenu->FindItem(id)) return found;
    }
    return nullptr;
}
