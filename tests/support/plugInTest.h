#pragma once

#include "framework/plugInMgr/pimUtils.h"
#include "tests/fixtures/plugIns/plugInJournal.h"
#include "tests/support/logRecorder.h"
#include "tests/support/messageRecorder.h"
#include "tests/support/plugInFolder.h"

#include <gtest/gtest.h>

namespace KoTest {

/// Base of fixtures that load plug-ins: an empty journal, a folder, and what is logged and shown meanwhile.
class PlugInTest : public testing::Test {
protected:
    PlugInTest() {
        plugInActions().clear();
        plugInJournal().clear();
        Ko::PimUtils::setFilePaths({});
    }

    PlugInFolder folder;
    MessageRecorder messages;
    LogRecorder log;
};

} // namespace KoTest
