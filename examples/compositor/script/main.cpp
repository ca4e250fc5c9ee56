#include "base/inInitMgr.h"
#include "framework/command/cmCommandStackGuard.h"
#include "host/actions.h"
#include "host/plugIns.h"
#include "resmgt/lgGroups.h"
#include "script/interpreter.h"
#include "script/plugInList.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace {

// The table has the messages and the log lines.
int listPlugIns() {
    Ko::LgSinks::replace({});
    std::ostream nowhere(nullptr);
    compositor::PlugIns const plugIns(nowhere);
    compositor::listPlugIns(std::cout);
    return 0;
}

// compositor [--plugins | SCRIPT]
int run(int argc, char** argv) {
    if (argc > 2) {
        std::cerr << "usage: compositor [--plugins | SCRIPT]" << std::endl;
        return 2;
    }
    compositor::EditActions const actions;
    if (argc == 2 && std::string_view(argv[1]) == "--plugins") return listPlugIns();
    compositor::PlugIns const plugIns(std::cerr);
    compositor::Editor editor;
    Ko::CmCommandStackGuard const active(editor.history());
    auto const bars = isatty(STDOUT_FILENO) ? compositor::Jobs::Bars::Shown : compositor::Jobs::Bars::NotShown;
    compositor::Jobs jobs(std::cout, std::cerr, bars);
    compositor::Interpreter interpreter(editor, jobs, std::cout, std::cerr);
    if (argc == 1) {
        interpreter.runTerminal(std::cin);
        return 0;
    }
    errno = 0;
    std::ifstream script(argv[1]);
    if (!script || script.peek() == std::ifstream::traits_type::eof()) {
        if (errno != 0) {
            std::cerr << argv[1] << " cannot be read: " << std::generic_category().message(errno) << std::endl;
            return 1;
        }
        script.clear();
    }
    return interpreter.runScript(script, argv[1]) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        Ko::InInitScope const scope(argc, argv);
        return run(argc, argv);
    } catch (std::exception const& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
