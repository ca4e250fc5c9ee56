// Input: the file of a user's shortcuts.
#include "framework/actions/actShortcutMap.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using namespace Ko;
using namespace KoFuzz;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    LiString const text(textOf(data, size));
    ActShortcutMap map;
    std::size_t const problems = map.setText(text, "input").size();
    LiString const written = map.getText();
    ActShortcutMap again;
    expect(again.setText(written, "output").size() == problems, "the lines that cannot be read stay");
    expect(again.getText() == written, "what is written is read as the same");
    try {
        ActShortcut const shortcut = ActShortcut::parse(text);
        expect(ActShortcut::parse(shortcut.getText()) == shortcut, "a shortcut is read as it is written");
    } catch (ActShortcutEx const&) {
        // Not a shortcut.
    }
    return 0;
}
