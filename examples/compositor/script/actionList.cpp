#include "script/actionList.h"

#include "framework/actions/actBasicParam.h"
#include "framework/actions/actFinder.h"
#include "framework/actions/actGroupedEntry.h"
#include "host/actions.h"
#include "host/layerItem.h"

#include <iomanip>
#include <ostream>
#include <sstream>

namespace compositor {

namespace {

using namespace Ko;

constexpr std::size_t mostFound = 8;
constexpr int textWidth = 30;

RCShdPtr<SnItem const> noInput() {
    return SnItemBasic<ActBasicParam>::create(ActBasicParam());
}

std::string nameOf(RCShdPtr<SnItem const> const& target) {
    return SnItemConvert<LayerRef>::test(target) ? SnItemConvert<LayerRef>::get(target).layer.name : "the document";
}

std::string checkMark(ActPresentation const& shown) {
    if (!shown.isCheckable) return "";
    return shown.isMixed ? "[-] " : shown.isChecked ? "[x] " : "[ ] ";
}

/// Writes the entries of a menu and of its sub-menus.
class TextMenu {
public:
    TextMenu(std::size_t numTargets, std::ostream& output) : _numTargets(numTargets), _output(output) {}

    void write(Vector<ActGroupedEntry> const& entries, std::string const& indent) {
        for (ActGroupedSection const& section : ActGroupedSection::arrange(entries)) {
            if (!section.name.empty()) _output << indent << section.name << "\n";
            for (ActGroupedSection::Item const& item : section.items)
                write(item, indent + (section.name.empty() ? "" : "  "));
        }
    }

private:
    void write(ActGroupedSection::Item const& item, std::string const& indent) {
        std::size_t const count = item.entry.getTargets().size();
        std::ostringstream text;
        text << indent << checkMark(item.presentation) << item.entry.getText();
        if (count < _numTargets) text << " (" << count << " of " << _numTargets << ")";
        if (item.presentation.shortcuts.empty())
            _output << text.str() << "\n";
        else
            _output << std::left << std::setw(textWidth) << text.str()
                    << item.presentation.shortcuts.front().getDisplayText(ActShortcut::Keyboard::Words) << "\n";
        write(item.entry.getMembers(ActRegistry::FirstOnly), indent + "  ");
    }

    std::size_t const _numTargets;
    std::ostream& _output;
};

} // namespace

void listActions(Targets const& targets, std::ostream& output) {
    TextMenu(targets.size(), output)
        .write(ActRegistry::getInstance().getGroupedActions(targets, noInput(), "", ActRegistry::AllSorted), "");
}

void explainAction(std::string const& path, Targets const& targets, std::ostream& output) {
    ActAction const& action = EditActions::find(path);
    RCShdPtr<SnItem const> const input = noInput();
    for (RCShdPtr<SnItem const> const& target : targets) {
        std::string const reason = ActPresented::of(action, target, input).whyNot;
        output << "  " << nameOf(target) << ": ";
        if (action.inputValid(target, input))
            output << "possible\n";
        else
            output << (reason.empty() ? "not possible" : reason) << "\n";
    }
}

void findActions(std::string const& letters, Targets const& targets, std::ostream& output) {
    ActFinder finder;
    finder.collect();
    for (ActFinder::Match const& match : finder.find(letters, targets.front(), noInput(), mostFound))
        output << "  " << match.text
               << (match.isValid             ? ""
                      : match.whyNot.empty() ? " (not here)"
                                             : " (" + match.whyNot + ")")
               << "\n";
}

} // namespace compositor
