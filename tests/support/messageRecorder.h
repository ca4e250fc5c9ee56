#pragma once

#include "resmgt/msgServer.h"

#include <mutex>
#include <string>
#include <vector>

namespace KoTest {

/// Records the texts of the messages that are displayed while it exists.
class MessageRecorder {
public:
    MessageRecorder() {
        Ko::MsgProtocol::setHandler([this](Ko::Msg const& message) {
            std::lock_guard const guard(_mutex);
            _texts.push_back(message.getText());
        });
    }
    ~MessageRecorder() { Ko::MsgProtocol::setHandler({}); }
    MessageRecorder(MessageRecorder const&) = delete;
    MessageRecorder& operator=(MessageRecorder const&) = delete;

    /// To be read while nothing is displayed.
    std::vector<std::string> const& texts() const { return _texts; }

private:
    std::mutex _mutex;
    std::vector<std::string> _texts;
};

} // namespace KoTest
