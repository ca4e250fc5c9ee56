#include "script/interpreter.h"
#include "framework/command/cmUndoGuard.h"
#include "plugIns/plugIn.h"
#include "tests/examples/compositor/pictures.h"
#include "tests/examples/compositor/session.h"
#include "tests/support/temporaryFolder.h"

namespace {

using namespace compositor;
using KoTest::TemporaryFolder;

class InterpreterTest : public KoTest::Session {
protected:
    InterpreterTest() { run("checker a 2 2 1 000000 ffffff\nchecker b 2 2 1 ff0000 0000ff80\n"); }

    // The layers of the document and the position in its history.
    std::string state() {
        run("layers");
        return take(output) + std::to_string(editor.history()->getNbUndoableCommands());
    }
    void expectError(std::string const& script, std::string const& error) {
        std::string const before = state();
        EXPECT_FALSE(run(script)) << script;
        EXPECT_EQ("test:" + error + "\n", take(errors));
        EXPECT_EQ(before, state()) << script;
        EXPECT_FALSE(Ko::CmUndoGuard::isGuardActive());
    }

    TemporaryFolder folder;
};

TEST_F(InterpreterTest, UndoesAndRedoesEveryEdit) {
    for (char const* const edit :
        {"canvas 30 20", "checker c 3 3 1 000000 ffffff", "gradient c 3 3 000000 ffffff vertical", "move a 3 -4",
            "opacity a 0.25", "blend b screen", "rename a c", "remove a", "reorder a 1", "drag a 1 1 2 2 3 3",
            "grab a\n pull 1 1\n opacity b 0\n drag a 2 2 3 3\nrelease", "nudge a 1 0\nnudge a 2 2\nnudge a -1 0",
            "group \"Two words\"\n move a 1 1\n group inner\n opacity b 0\n end\nend"}) {
        std::string const before = state();
        EXPECT_TRUE(run(edit)) << take(errors);
        std::string const after = state();
        EXPECT_NE(before, after);
        EXPECT_EQ(3, editor.history()->getNbUndoableCommands()) << "one step: " << edit;
        run("undo");
        EXPECT_EQ(before, state()) << edit;
        run("redo");
        EXPECT_EQ(after, state()) << edit;
        run("undo");
    }
}

TEST_F(InterpreterTest, ReadsWordsAfterAByteOrderMarkAndHelps) {
    EXPECT_TRUE(run("\xEF\xBB\xBF\techo a#b  \"\\\"c\\\" \\\\d #\" \"\" e\"f\\ # no word\r\nhelp blend"))
        << take(errors);
    std::string const words = take(output);
    EXPECT_EQ(0u, words.find("a#b \"c\" \\d #  e\"f\\\n")) << words;
    EXPECT_THAT(words, testing::HasSubstr("multiply  s d + s (1 - b) + d (1 - a)\n"));
}

TEST_F(InterpreterTest, MovesThroughTheHistoryAndLimitsIt) {
    run("move a 1 0\nmove a 2 0\nmove a 3 0\ngoto 3");
    EXPECT_EQ(1, editor.document().layer("a").placed.x);
    run("redo 2\nhistory");
    EXPECT_EQ("  0 Initial State (saved)\n  1 Add a\n  2 Add b\n  3 Move a\n  4 Move a\n> 5 Move a\n", take(output));
    run("limit 2\nhistory");
    EXPECT_EQ("  0 Initial State\n  1 Move a\n> 2 Move a\n", take(output));
    run("drag a 1 2 3 4");
    EXPECT_EQ(4, editor.document().layer("a").placed.y);
}

TEST_F(InterpreterTest, KeepsQuietEditsOutOfTheHistoryAndNeverUndoesTheWrongStep) {
    run("move a 1 0\nquietly\n opacity b 0.5\n remove a\nend");
    EXPECT_EQ(3, editor.history()->getNbUndoableCommands());
    EXPECT_FALSE(run("undo"));
    EXPECT_EQ("test:1: \"Move a\" cannot be undone any more (Command un/execution failure.); 3 steps were dropped\n",
        take(errors));
    EXPECT_EQ(0, editor.history()->getNbUndoableCommands());
    EXPECT_EQ(0.5f, editor.document().layer("b").placed.opacity);
}

TEST_F(InterpreterTest, ReportsBadInputWithItsLineAndChangesNothing) {
    folder.write("text.png", "not a picture");
    std::string const missing = (folder / "missing.png").string();
    std::string const text = (folder / "text.png").string();
    std::string groups, ends;
    for (int depth = 0; depth < 100000; ++depth) {
        groups += "group x\n";
        ends += "end\n";
    }
    for (auto const& [script, error] : std::vector<std::pair<std::string, std::string>>{
             {"\n# comment\nfly a", "3: unknown word \"fly\"; \"help\" lists the words"},
             {"move a 1", "1: write: move NAME X Y"}, {"move x 1 1", "1: there is no layer \"x\""},
             {"move a 1.5 1", "1: \"1.5\" is not a whole number from -2147483647 to 2147483647"},
             {"rename a b", "1: there is a layer \"b\" already"},
             {"reorder a 2", "1: position 2 lies above the highest layer"},
             {"drag a 1 1 2", "1: a path is made of pairs of X and Y"}, {"redo", "1: there is nothing to redo"},
             {"goto 3", "1: \"3\" is not a whole number from 0 to 2"},
             {"rename a \"b", "1: a quotation mark is not closed"},
             {"rename a \"b\\\"", "1: a quotation mark is not closed"},
             {"rename a \"b\"c", "1: after a closing quotation mark there must be a blank"},
             {"group x\n undo\nend", "2: \"undo\" is not possible inside a group"},
             {"grab a\npull 1 1\nundo", "3: \"undo\" is not possible during a drag"},
             {"grab a\ngroup x\n pull 1 1\nend", "3: \"pull\" is not possible inside a group"},
             {"pull 1 1", "1: no layer is dragged"}, {"flatten a", "1: there is a layer \"a\" already"},
             {"quietly\n group x\n move a 1 1\n end", "1: the script ends inside this quietly; \"end\" is missing"},
             {"group x\n group y\n", "2: the script ends inside this group; \"end\" is missing"},
             {"open " + missing, "1: " + missing + " cannot be read: No such file or directory"},
             {"open " + text, "1: " + text + " cannot be opened: it is neither a document nor a PNG picture"},
             {"open /dev/zero", "1: /dev/zero cannot be read: it is not a file"},
             {groups + ends, "201: groups inside groups go at most 200 deep"},
             {"help fly", "1: unknown word \"fly\"; \"help\" lists the words"}, {"stop 99", "1: there is no job 99"}})
        expectError(script, error);
}

TEST_F(InterpreterTest, ACancelledDragLeavesDocumentAndHistoryAsTheyWere) {
    run("move a 1 0\nundo");
    std::string const before = state();
    EXPECT_TRUE(run("grab a\npull 9 9\nremove b\ngroup x\n opacity a 0\nend\ncancel")) << take(errors);
    EXPECT_EQ(before, state());
    EXPECT_TRUE(run("grab a\npull 9 9")) << "the end of the input cancels it as well";
    EXPECT_EQ(before, state());
    EXPECT_TRUE(editor.history()->canRedo());
}

TEST_F(InterpreterTest, APictureThatArrivesDuringADragOrInAGroupComesAfterThatStep) {
    run("canvas 2 2\nremove b");
    EXPECT_TRUE(run("grab a\npull 1 1\nflatten flat\nwait\npull 2 2\nhistory\nrelease")) << take(errors);
    EXPECT_EQ(std::string::npos, take(output).find("Add flat"));
    EXPECT_TRUE(run("group x\n move a 0 0\n flatten flat2\n wait\n move a 5 5\nend\nhistory")) << take(errors);
    EXPECT_THAT(take(output), testing::HasSubstr("  5 Drag a\n  6 Add flat\n  7 x\n> 8 Add flat2\n"));
    EXPECT_EQ((Colour{0, 0, 0, 255}), editor.document().layer("flat").placed.picture->row(1)[1]) << "as it was then";
}

TEST_F(InterpreterTest, ShowsWhetherTheDocumentIsSaved) {
    std::string const saved = "save " + (folder / "x.koc").string() + "\nwait\n";
    for (auto const& [script, isClean] :
        std::vector<std::pair<std::string, bool>>{{"", true}, {"undo\nredo", true}, {"move a 3 3", false},
            {"move a 3 3\nundo", true}, {"undo\nmove a 4 4", false}, {"quietly\n opacity a 0\nend", false},
            {"group x\n quietly\n  opacity a 0.5\n end\nend", false}, {"grab a\npull 7 7\ncancel", true},
            {"open " + (folder / "x.koc").string(), true}, {"nudge a 1 1\n" + saved + "nudge a 1 1\nundo", true}}) {
        EXPECT_TRUE(run(saved + script)) << take(errors);
        EXPECT_EQ(isClean, editor.history()->isClean()) << script;
    }
    EXPECT_FALSE(run("save " + (folder / "no/x.koc").string()));
    EXPECT_FALSE(editor.history()->isClean()) << "a save that failed";
    std::istringstream terminal(saved + "remove a\nundo\n");
    take(output);
    interpreter.runTerminal(terminal);
    EXPECT_EQ("*> > > *> > \n", take(output));
}

TEST_F(InterpreterTest, KeepsPicturesWithinABudget) {
    EXPECT_TRUE(run("checker c 256 512 9 000000 ffffff\nremove c\nmove a 1 1\nhistory\nmemory 0.6")) << take(errors);
    EXPECT_THAT(take(output), testing::HasSubstr("  3 Add c\n  4 Remove c (0.5 MiB)\n> 5 Move a\n"));
    EXPECT_TRUE(run("checker c 256 512 9 000000 ffffff\nremove c\nhistory"));
    EXPECT_EQ("  0 Initial State\n  1 Move a\n  2 Add c\n> 3 Remove c (0.5 MiB)\n  0.5 MiB of 0.6 MiB\n", take(output));
}

TEST_F(InterpreterTest, StopsAtAnErrorInAGroupWithWhatWasDoneAsOneStep) {
    EXPECT_FALSE(run("group x\n move a 1 1\n move x 1 1\n move a 2 2\nend\nmove a 3 3"));
    EXPECT_EQ(1, editor.document().layer("a").placed.x);
    EXPECT_EQ(3, editor.history()->getNbUndoableCommands());
    run("undo");
    EXPECT_EQ(0, editor.document().layer("a").placed.x);
}

TEST_F(InterpreterTest, RendersSavesAndOpensAgain) {
    std::string const picture = (folder / "out.png").string();
    std::string const document = (folder / "out.koc").string();
    EXPECT_TRUE(run("canvas 2 2\nmove b 1 1\nrender " + picture + "\nsave " + document)) << take(errors);
    Picture const rendered = KoTest::readPicture(picture);
    EXPECT_EQ((Colour{0, 0, 0, 255}), rendered.row(0)[0]);
    EXPECT_EQ((Colour{255, 0, 0, 255}), rendered.row(1)[1]);
    std::string const saved = state().substr(0, state().rfind('\n'));
    EXPECT_TRUE(run("remove a\nopen " + document)) << take(errors);
    EXPECT_EQ(saved, state().substr(0, state().rfind('\n')));
    EXPECT_EQ(1, editor.history()->getStackHeight()) << "a history of its own";
    EXPECT_FALSE(run("group x\n move a 9 9\n open " + document + "\nend")) << "not inside a step";
    EXPECT_TRUE(run("undo"));
    EXPECT_EQ(saved, state().substr(0, state().rfind('\n')));
    EXPECT_TRUE(run("open " + picture + "\nopen " + picture + " named"));
    EXPECT_EQ("out", editor.document().layers()[2].name);
    EXPECT_EQ("named", editor.document().layers()[3].name);
}

TEST_F(InterpreterTest, RendersTheDocumentAsItWasWhenTheJobWasSubmitted) {
    std::string const picture = (folder / "out.png").string();
    EXPECT_TRUE(run("canvas 2 2\nrender " + picture + "\nremove a\nremove b\nwait\njobs\njobs")) << take(errors);
    EXPECT_EQ((Colour{255, 0, 0, 255}), KoTest::readPicture(picture).row(0)[0]);
    EXPECT_THAT(take(jobOutput),
        testing::ContainsRegex("^job 1 \\(render out.png\\): busy\njob 1 \\(render out.png\\): complete\n"
                               "  job 1 \\(render out.png\\): complete, 100%, 1 of 1 tiles, submitted [-0-9: ]+, "
                               "started [-0-9: ]+, ended [-0-9: ]+\n$"))
        << "a job that has ended is listed once";
}

TEST_F(InterpreterTest, StopsJobsAndLeavesNoHalfWrittenFile) {
    std::string const large = "canvas 20000 10000\nrender " + (folder / "large.png").string() + "\n";
    EXPECT_TRUE(run(large + "stop 1\nwait"));
    EXPECT_NE(std::string::npos, take(jobOutput).find("job 1 (render large.png): stopped\n"));
    EXPECT_EQ(0, folder.entries());
    EXPECT_TRUE(run(large + "save " + (folder / "x.koc").string() + "\nquit\nremove a"));
    EXPECT_EQ(2u, editor.document().layers().size()) << "quit ends the script";
    EXPECT_NE(std::string::npos, take(jobOutput).find("job 2 (render large.png): stopped\n"));
    EXPECT_FALSE(std::filesystem::exists(folder / "large.png"));
    EXPECT_TRUE(Ko::BgManager::getInstance().getJobs().empty());
}

TEST_F(InterpreterTest, HoldsJobsAndListsWhatTheyWaitFor) {
    std::string const picture = (folder / "x.png").string();
    EXPECT_TRUE(run("canvas 2 2\nrun \"sleep 600\"\nafter 1 render " + picture +
                    "\nafter 2 run true\npause 3\njobs\nresume 3\n" + "pause 2\nstop 1\nwait\njobs"))
        << take(errors);
    std::string const lines = take(jobOutput);
    EXPECT_THAT(lines, testing::ContainsRegex("  job 2 .render x.png.: waiting, 0%, after job 1, submitted"));
    EXPECT_THAT(lines, testing::ContainsRegex("  job 3 .run true.: waiting, paused, 0%, after job 2, submitted"));
    EXPECT_THAT(lines, testing::HasSubstr("job 2 (render x.png): stopped (The job \"run sleep\" was stopped.)\n"));
    EXPECT_EQ(0, folder.entries());
    expectError("after 1 render x", "1: there is no job 1");
    expectError("run true\nafter 4 wait", "2: \"wait\" starts no job");
    EXPECT_TRUE(run("render " + picture + "\npause 5\nwait")) << "the wait resumes";
}

TEST_F(InterpreterTest, ChainsTheFramesOfAnOperator) {
    static_cast<void>(compositor::makeAction(
        {"Mirror", "nothing", 0, 0}, [](Picture const& picture, Statement const&) { return picture; }));
    std::string const frame = (folder / "f").string();
    EXPECT_TRUE(run("canvas 2 2\nrender " + frame + "1.png\nwait\nafter 1 frames " + frame + "%d.png " + frame +
                    "2.png 1 1 Mirror\nwait\nframes " + frame + "%d.png " + frame + "o%d.png 1 2 Mirror"))
        << take(errors);
    EXPECT_EQ(KoTest::readPicture(frame + "1.png"), KoTest::readPicture(frame + "o2.png"));
    expectError("frames a b 1 2 Nothing", "1: there is no operator \"Nothing\"");
    EXPECT_FALSE(run("frames " + frame + "%d.png " + frame + "x%d.png 2 4 Mirror"));
    EXPECT_THAT(take(jobOutput), testing::HasSubstr("failed (The job \"frame fx3.png\" failed.)"));
}

TEST_F(InterpreterTest, EndsAScriptWhenAJobFailsAndReportsItOnce) {
    std::string const bad = (folder / "no/x.png").string();
    EXPECT_FALSE(run("\nrender " + bad + "\nwait\nremove a"));
    EXPECT_EQ(
        "test:2: A background job failed: " + bad + " cannot be written: No such file or directory\n", take(errors));
    EXPECT_EQ(2u, editor.document().layers().size());
    EXPECT_TRUE(run("wait")) << "reported once";
}

TEST_F(InterpreterTest, RunsExternalProgramsAndShowsTheirLines) {
    EXPECT_TRUE(run("run \"sh -c 'echo $WHO; echo oops >&2'\" \"WHO=the world\"\nwait")) << take(errors);
    std::string const lines = take(jobOutput);
    EXPECT_NE(std::string::npos, lines.find("  [1] the world\n")) << lines;
    EXPECT_NE(std::string::npos, lines.find("  [1] oops\n"));
    EXPECT_NE(std::string::npos, lines.find("job 1 (run sh): complete\n"));
    EXPECT_TRUE(run("run \"sleep 1000\"\nstop 2\nwait"));
    EXPECT_NE(std::string::npos, take(jobOutput).find("job 2 (run sleep): stopped\n"));
    expectError(
        "run \"sh -c 'exit 3'\"", "1: A background job failed: External process terminated with return value 3");
    expectError("run /no/such/program", "1: A background job failed: External process could not be launched");
    expectError("run true =x", "1: \"=x\" does not define a variable; write NAME=VALUE");
}

TEST_F(InterpreterTest, HandsAPictureToAProgramAsAFileOrAsItsInput) {
    std::string const copy = (folder / "a $'copy'.png").string();
    run("canvas 2 2");
    for (char const* const command : {"cp %f %o", "cp '%f' \\\"%o\\\"", "sh -c 'cp %f %o'", "sh -c \\\"cp %f %o\\\"",
             "sh -c 'sleep 0.1; cat > %o'"}) {
        EXPECT_TRUE(run("export \"" + copy + "\" \"" + command + "\"")) << command << take(errors);
        EXPECT_EQ((Size{2, 2}), KoTest::readPicture(copy).size());
        std::filesystem::remove(copy);
    }
    EXPECT_FALSE(run("export " + (folder / "x").string() + " false"));
    EXPECT_FALSE(run("export " + (folder / "x").string() + " \"false %f\""));
    EXPECT_TRUE(run("canvas 900 900\nexport " + (folder / "x").string() + " true")) << "it need not read its input";
    EXPECT_EQ(0, folder.entries()) << "the temporary pictures are gone";
}

TEST(Jobs, ShowABarForEachRunningJobWhileWaiting) {
    std::ostringstream terminal;
    TemporaryFolder const folder;
    {
        Jobs jobs(terminal, terminal, Jobs::Bars::Shown);
        jobs.submit("here", makeRenderProtocol(Document({600, 400}), folder / "a.png"));
        jobs.submit("here", makeRenderProtocol(Document({6, 4}), folder / "b.png"));
        jobs.wait();
    }
    EXPECT_THAT(terminal.str(), testing::ContainsRegex("\\[#*-+\\] [0-9]+% job 1 \\(render a.png\\)\n"));
    EXPECT_THAT(terminal.str(), testing::ContainsRegex("\x1b\\[[12]A\x1b\\[J"));
    EXPECT_THAT(terminal.str(), testing::ContainsRegex("job 2 \\(render b.png\\): complete\n"));
}

TEST_F(InterpreterTest, GoesOnAfterErrorsAtATerminal) {
    std::istringstream terminal("fly\n\"open\nmove a 7 7\ngroup g\n fly\n move a 8 8\n end\nquit\nmove a 9 9\n");
    interpreter.runTerminal(terminal);
    EXPECT_EQ(8, editor.document().layer("a").placed.x);
    EXPECT_EQ(4, editor.history()->getNbUndoableCommands());
    EXPECT_NE(std::string::npos, take(errors).find("input:2: a quotation mark is not closed"));
    std::istringstream endless("group g\n move a 9 9\n");
    interpreter.runTerminal(endless);
    EXPECT_EQ("input:1: the input ends inside this group\n", take(errors));
    EXPECT_FALSE(Ko::CmUndoGuard::isGuardActive());
}

} // namespace
