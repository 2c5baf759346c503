#pragma once
// The fields of an object's property page as one list, whatever the kind of
// object: its name, the fields that the class's own rules check (size and
// colour of a solid, target size of a scaler, the crop's window, the
// composer's layers, the footage's flow), and every further parameter of the
// class's table that a page can edit alone (animated numbers within their
// limits, whole numbers, flags). A front end draws the list; a field's Commit
// checks the text, shows a refusal in a message box and answers false, or
// changes the object and answers true.
// Main thread only.

#include "objects/hPropertyPage.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class iElement;
class hSequenceProperties;
class imodCrop;
class imodMerger;

struct hPropertyField {
    enum class Kind { Text, Flag };

    std::string Label;
    Kind Type = Kind::Text;
    // The text the field shows now; a flag shows "1" or "0".
    std::function<std::string()> Text;
    std::function<bool(const std::string&)> Commit;
};

class hPropertyForm : public hPropertyPage {
public:
    // The page of the element at the frame.
    hPropertyForm(iElement& element, long frame);
    ~hPropertyForm();

    const std::vector<hPropertyField>& GetFields() const { return Fields; }

    // The page rules of a kind that a higher layer defines: a maker adds the
    // kind's fields and answers true when the element is of its kind.
    using Maker = bool (*)(hPropertyForm& form, iElement& element, long frame);
    // Registers a maker; called during static construction.
    static bool AddMaker(Maker maker);

    // For makers: a field of text, and rules that the form keeps as long as it lives.
    void AddText(std::string label, std::function<std::string()> text,
                 std::function<bool(const std::string&)> commit);
    template <class Page> Page& Keep(std::unique_ptr<Page> page) {
        Page& kept = *page;
        Rules.push_back(std::move(page));
        return kept;
    }
    // The footage's rules, for "Change footage..."; null for other kinds.
    hSequenceProperties* GetSequencePage() const;

private:
    void addNameField(iElement& element);
    void addClassFields(iElement& element, long frame);
    void addCropFields(imodCrop& crop, long frame);
    void addMergerFields(imodMerger& merger, long frame);
    template <class Object>
    void addTableFields(Object& object, long frame, std::initializer_list<std::string_view> ruled);
    static std::vector<Maker>& makers();

    std::vector<std::unique_ptr<hPropertyPage>> Rules;
    std::vector<hPropertyField> Fields;
};
