#pragma once

#include "host/actions.h"
#include "host/plugIns.h"
#include "script/interpreter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <utility>

namespace KoTest {

/// A compositor that runs scripts without a terminal.
class Session : public testing::Test {
protected:
    bool run(std::string const& script) {
        std::istringstream stream(script);
        return interpreter.runScript(stream, "test");
    }
    static std::string take(std::ostringstream& stream) {
        std::string const text = stream.str();
        stream.str("");
        return text;
    }

    std::ostringstream output;
    std::ostringstream errors;
    std::ostringstream jobOutput;
    compositor::EditActions const actions;
    compositor::PlugIns const plugIns{errors};
    compositor::Editor editor;
    compositor::Jobs jobs{jobOutput, errors, compositor::Jobs::Bars::NotShown};
    compositor::Interpreter interpreter{editor, jobs, output, errors};
};

} // namespace KoTest
