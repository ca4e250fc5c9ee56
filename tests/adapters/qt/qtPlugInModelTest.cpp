#include "adapters/qt/qtPlugInModel.h"

#include "tests/support/declaredLibrary.h"
#include "tests/support/plugInTest.h"

#include <QAbstractItemModelTester>

using namespace Ko;
using namespace KoTest;

namespace {

class QtPlugInModelTest : public PlugInTest {
protected:
    std::string shown(int row, QtPlugInModel::Column column) const {
        return model.index(row, column).data().toString().toStdString();
    }

    QtPlugInModel model;
    QAbstractItemModelTester const tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

} // namespace

TEST_F(QtPlugInModelTest, ShowsWhatWasLoadedAndWhyTheRestWasNot) {
    auto const load = [&](OsFilePath const& file) {
        PimUtils::load(file, InInitMgr::Reinitialization);
        model.refresh();
    };
    load(folder.add("unresolved.op.so"));
    std::string const declaration = declarationOf("name=Next\nversion=2.1\ntype=op\ninterface=framework 9.0\n");
    load(folder.write("next.op.so", withSection(emptyLibrary(), declaration)).string());
    load(folder.add("blur.op.so"));
    struct Row {
        char const *name, *version, *type, *state, *reason;
    };
    int row = 0;
    for (Row const& expected : {Row{"unresolved", "", "op", "Failed", "undefined symbol"},
             Row{"Next", "2.1", "op", "Refused", "framework 9.0"}, Row{"blur", "", "op", "Loaded", ""}}) {
        SCOPED_TRACE(expected.name);
        ASSERT_LT(row, model.rowCount());
        EXPECT_EQ(shown(row, QtPlugInModel::Name), expected.name);
        EXPECT_EQ(shown(row, QtPlugInModel::Version), expected.version);
        EXPECT_EQ(shown(row, QtPlugInModel::Type), expected.type);
        EXPECT_EQ(shown(row, QtPlugInModel::State), expected.state);
        EXPECT_NE(shown(row, QtPlugInModel::Reason).find(expected.reason), std::string::npos);
        EXPECT_EQ(shown(row, QtPlugInModel::Reason).empty(), std::string(expected.reason).empty());
        ++row;
    }
}
