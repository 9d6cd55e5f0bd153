#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "base/Names.h"
#include "base/Sha256.h"
#include "base/Text.h"
#include "supervisor/resume/ResumePoint.h"
#include "support/TemporaryFolder.h"

namespace {

/// The hash of a file with this text.
std::string Hash(const std::string& text)
{
    CSha256 digest;
    digest.Add(text.data(), text.size());
    return digest.Digest();
}

/// A folder with the input "in", the files of a row, and the intents of a row.
class CInterruptedFile {
public:
    /// "out=text done=text"; "-in": there is no input any more.
    explicit CInterruptedFile(const std::string& files)
    {
        m_file = {.number = 1, .path = m_folder.Write("in", "input"), .size = 5};
        for (const std::string& word : Split(files, " ")) {
            if (word == "-in")
                std::filesystem::remove(m_file.path);
            else if (const auto equals = word.find('='); equals != std::string::npos)
                m_folder.Write(word.substr(0, equals), word.substr(equals + 1));
        }
    }

    /// "put out=result move done=input": what was intended, with target and content; "put!" replaces a file.
    void Intend(const std::string& intents)
    {
        const std::map<std::string, std::pair<Act, bool>> acts = {
            {"put", {Act::Put, false}},   {"beside", {Act::Put, false}}, {"step-start", {Act::Start, false}},
            {"copy", {Act::Put, true}},   {"move", {Act::Move, true}},   {"delete", {Act::Delete, true}},
            {"start", {Act::Start, true}}};
        const std::vector<std::string> words = Split(intents, " ");
        for (std::size_t at = 0; at + 1 < words.size(); at += 2) {
            const bool replaces = words[at].ends_with('!');
            const auto [act, isFinal] = acts.at(words[at].substr(0, words[at].size() - (replaces ? 1 : 0)));
            const auto equals = words[at + 1].find('=');
            m_intents.push_back({.number = 1,
                                 .finalAction = isFinal,
                                 .act = act,
                                 .file = act == Act::Put && !isFinal ? m_folder / "temporary" : m_file.path,
                                 .target = act == Act::Delete ? "" : m_folder / words[at + 1].substr(0, equals),
                                 .sha256 = Hash(words[at + 1].substr(equals + 1))});
            m_intents.back().replaces = replaces;
            m_intents.back().copy = words[at] == "beside";
        }
    }

    /// What is left to do, outcome, results, state of the final action, whether the input's hash is known, what is
    /// taken back, and the files there are.
    std::string Told(const ResumeRules& rules)
    {
        const ResumePoint point = FindResumePoint(m_file, m_intents, std::nullopt, rules);
        std::string told = std::map<Left, std::string>{
            {Left::Everything, "everything"},
            {Left::FinalAction, "final action"},
            {Left::Nothing, "nothing"},
            {Left::Unknowable,
             "unknowable"}}.at(point.left);
        if (point.left != Left::Everything) told += std::string(" ") += OutcomeWord(point.record.outcome);
        for (const auto& output : point.record.outputs) told += " " + FileName(output.path);
        using State = FinalActionRecord::State;
        if (const auto& action = point.record.finalAction)
            told += action->state == State::Done ? " done" : action->state == State::Failed ? " failed" : " unknown";
        if (point.record.sha256 == Hash("input")) told += " hashed";
        for (const std::string& path : point.takeBack) told += " -" + FileName(path);
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
            files[entry.path().filename().string()] = FileBytes(entry.path().string());
        told += ":";
        for (const auto& [name, text] : files) told += " " + name + "=" + text;
        return told;
    }
    const CTemporaryFolder& Folder() const { return m_folder; }

private:
    CTemporaryFolder m_folder;
    PlannedFile m_file;
    std::vector<Intent> m_intents;
};

TEST(ResumePoint, DecidesFromWhatIsOnTheDisk)
{
    const ResumeRules usual{.hasFinalAction = true}, noFinal{}, two{.hasFinalAction = true, .outputsPerFile = 2},
        three{.hasFinalAction = true, .outputsPerFile = 3}, redo{.hasFinalAction = true, .redoResults = true};
    const struct {
        const char *files, *intents;
        ResumeRules rules;
        const char* told;
    } rows[] = {
        // A result is there, under one of the names that were free, or it is made again.
        {"", "", usual, "everything: in=input"},
        {"", "put out=result", usual, "everything: in=input"},
        {"out=else", "put out=result", usual, "everything: in=input out=else"},
        {"out=result", "put out=result", usual, "final action saved out hashed: in=input out=result"},
        {"out=result", "put out=result", noFinal, "nothing saved out hashed: in=input out=result"},
        {"out=else out-1=result", "put out=result put out-1=result", usual,
         "final action saved out-1 hashed: in=input out=else out-1=result"},
        // An unchanged copy is no result that counts as saved.
        {"out=input", "put out=input", usual, "final action copied-unchanged out hashed: in=input out=input"},
        // On resume results are made again where that leaves no trace.
        {"out=result", "put out=result", redo, "everything out -out: in=input out=result"},
        {"in=result", "put in=result", redo, "final action saved in: in=result"},
        {"out=result", "step-start program=input put out=result", redo,
         "final action saved out hashed: in=input out=result"},
        // What has been saved in place is not processed once more.
        {"", "put in=result", usual, "everything: in=input"},
        {"in=result", "put in=result", usual, "final action saved in: in=result"},
        {"in=result", "put in=result put out=second", two, "unknowable incomplete in: in=result"},
        // Results of an unfinished file are taken back where the name was free; the last of two was not the last one.
        {"out=result other=more", "put out=result put! other=more put third=x", three,
         "everything out other -out: in=input other=more out=result"},
        {"out=result", "put out=result", two, "everything out -out: in=input out=result"},
        {"out=result other=more", "put out=result put! other=more", two,
         "final action saved out other hashed: in=input other=more out=result"},
        // Copies beside the results are no results, and are taken back with them.
        {"beside=input", "beside beside=input", usual, "everything beside -beside: beside=input in=input"},
        {"out=result beside=input", "put out=result beside beside=input", usual,
         "everything out beside -out -beside: beside=input in=input out=result"},
        {"out=result beside=input", "beside beside=input put out=result", usual,
         "final action saved beside out hashed: beside=input in=input out=result"},
        // Moves are completed, as across file systems, only when nothing can get lost.
        {"", "move done=input", usual, "final action saved: in=input"},
        {"done=input", "move done=input", usual, "nothing saved done: done=input"},
        {"-in done=input", "move done=input", usual, "nothing saved done: done=input"},
        {"-in", "move done=input", usual, "unknowable incomplete failed:"},
        {"done=else", "move done=input", usual, "final action saved: done=else in=input"},
        {"in=new done=input", "move done=input", usual, "unknowable incomplete failed: done=input in=new"},
        {"done=input", "move! done=input", usual, "final action saved: done=input in=input"},
        // Other final actions are done or left; a program that may have been started is not started again.
        {"", "delete =input", usual, "final action saved: in=input"},
        {"-in", "delete =input", usual, "nothing saved done:"},
        {"", "copy copy=input", usual, "final action saved: in=input"},
        {"copy=input", "copy copy=input", usual, "nothing saved done: copy=input in=input"},
        {"", "start program=input", usual, "unknowable incomplete unknown: in=input"},
        {"", "step-start program=input", usual, "unknowable incomplete: in=input"},
        {"", "step-start program=input put out=result", usual, "unknowable incomplete: in=input"},
        {"out=result", "step-start program=input put out=result", usual,
         "final action saved out hashed: in=input out=result"},
        // The final action keeps what was written before.
        {"out=result", "put out=result move done=input", usual, "final action saved out hashed: in=input out=result"},
        {"-in done=result", "put in=result move done=result", usual, "nothing saved in done: done=result"},
    };
    for (const auto& row : rows) {
        CInterruptedFile file(row.files);
        file.Intend(row.intents);
        EXPECT_EQ(file.Told(row.rules), row.told) << row.files << "; " << row.intents;
    }
}

TEST(ResumePoint, TheOnlyNameOfAFileIsNeverRemoved)
{
    if (kHasLinks) {
        CInterruptedFile linked("");
        std::filesystem::create_symlink(linked.Folder() / "in", linked.Folder() / "link");
        linked.Intend("move link=input");
        EXPECT_EQ(linked.Told({.hasFinalAction = true}), "nothing saved done: in=input link=input");
    }
    CInterruptedFile named("");
    std::filesystem::create_hard_link(named.Folder() / "in", named.Folder() / "second");
    named.Intend("move second=input");
    EXPECT_EQ(named.Told({.hasFinalAction = true}), "nothing saved done: second=input");
}

}  // namespace
