// A worker without documents: does what the names of its input files say. It speaks the protocol of docs/runs.md.
//
// It "processes" a file by writing its text in capitals. Words in a file's name make it misbehave: see Misbehave and
// DieIfTold. The environment variable FAKE_KILL=N:PLACE makes it kill its supervisor when it comes to that place for
// the Nth time; the count is kept in the file FAKE_COUNT.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "base/Names.h"
#include "base/Text.h"
#include "common/ProductPaths.h"
#include "platform/AtomicFile.h"
#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "platform/Programs.h"
#include "platform/ThisProcess.h"
#include "protocol/Json.h"
#include "protocol/RunDescription.h"
#include "protocol/RunReach.h"
#include "support/TestProcess.h"

namespace {

Json Ask(const Json& question)
{
    std::cout << LineOf(question) << std::endl;
    std::string answer;
    if (!std::getline(std::cin, answer)) std::_Exit(1);
    return ParseObject(answer).value_or(Json::object());
}

void Tell(const Json& message) { std::cout << LineOf(message) << std::endl; }

class CLog {
public:
    CLog() : m_file(std::fopen(MakeProductPaths(platform::ApplicationDataFolder()).logFile.c_str(), "ab")) {}
    void Line(const std::string& text)
    {
        std::fprintf(m_file, "%d: %s\r\n", ++m_number, text.c_str());
        std::fflush(m_file);
    }

private:
    std::FILE* m_file;
    int m_number = 0;
};

struct Input {
    int number = 0;
    std::string path;
    bool finalActionOnly = false;
    bool Is(const std::string& word) const { return FileName(path).find(word) != std::string::npos; }
};

/// How often this was called by all workers of a test.
std::size_t Count()
{
    const std::string counter = platform::EnvironmentText("FAKE_COUNT");
    std::FILE* count = std::fopen(counter.c_str(), "ab");
    std::fputc('x', count);
    std::fclose(count);
    return std::filesystem::file_size(counter);
}

/// Comes to a place where a test may want the supervisor, and this worker with it, to die.
void Pass(const std::string& place)
{
    const std::string wanted = platform::EnvironmentText("FAKE_KILL");
    const std::size_t colon = wanted.find(':');
    if (colon == std::string::npos || wanted.substr(colon + 1) != place) return;
    // Several workers may have counted at once, so that none of them finds exactly this number.
    if (Count() < std::stoul(wanted.substr(0, colon))) return;
#ifndef _WIN32  // nothing there asks for it: a run that is to be killed would have to be a process of its own
    kill(getppid(), SIGKILL);
#endif
    std::_Exit(9);
}

class CFakeWorker {
public:
    int Run()
    {
        const Json job = ObjectAt(Ask({{"ask", "job"}}), "job");
        m_run = RunDescriptionFrom(ObjectAt(job, "description"));
        m_sequence = WorkFilePath(m_run.work, kSequenceWork);
        m_tag = TextAt(job, "run");
        if (m_sequence == "does not start") {
            std::cerr << "no plug-in\n";
            return 4;
        }
        m_log.Line("LOG STARTED: today");
        m_log.Line("preamble");
        const std::string end = TextAt(job, "kind") == "plan" ? Plan() : Process();
        m_log.Line(std::string(86, '-'));
        Tell({{"tell", "ends"}, {"end", end}, {"message", end == "finished" ? "" : "as asked"}});
        m_log.Line("LOG STOPPED: at " + std::to_string(ProcessId()));
        return 0;
    }

private:
    std::string Plan()
    {
        if (m_sequence == "not there") return "not-started";
        const std::string folder = m_run.inputs.front();
        int number = 0;
        for (const platform::FolderEntry& entry : platform::ListFolder(folder)) {
            if (entry.isFolder || (entry.name.find("hidden") != std::string::npos && IsBlind())) continue;
            const std::string path = folder + kSeparator + entry.name;
            const auto stamp = platform::StampOf(path);
            const std::size_t group = entry.name.find("group");
            Tell({{"tell", "report"},
                  {"report",
                   {{"inputs", Json::array({{{"number", ++number},
                                             {"path", TextFromBytes(path)},
                                             {"size", stamp->size},
                                             {"modified", std::to_string(stamp->modifiedNanoseconds)},
                                             {"group", group == std::string::npos
                                                           ? 0
                                                           : ParseDecimal(entry.name.substr(group + 5))}}})}}}});
        }
        m_log.Line("\tNumber of input files : " + std::to_string(number));
        Ask({{"ask", "mark"}, {"mark", "inputs-counted"}});
        m_log.Line("closing");
        Tell({{"tell", "report"},
              {"report",
               {{"plan",
                 {{"total", number},
                  {"oneWorker", m_sequence == "one worker"},
                  {"oneWorkerReason", m_sequence == "one worker" ? "for a reason" : ""},
                  {"tooYoung", 0},
                  {"unreadableFolders", IsBlind() ? 1 : 0},
                  {"reach", RunReachJson({.inputs = {folder}, .folders = {m_run.outputFolder, m_run.destination}})},
                  {"warnings", Json::array()}}}}}});
        return "finished";
    }

    static bool IsBlind() { return !platform::EnvironmentText("FAKE_BLIND").empty(); }

    std::string Process()
    {
        if (m_sequence == "asks for nothing" || (m_sequence == "asks every other time" && Count() % 2 != 0))
            return "finished";
        bool counted = false, preflighted = false;
        for (Input input; Next(input);) {
            if (!std::exchange(counted, true)) {
                m_log.Line("\tNumber of input files : " + std::to_string(m_total));
                Ask({{"ask", "mark"}, {"mark", "inputs-counted"}});
            }
            m_log.Line("file " + FileName(input.path));
            if (!input.finalActionOnly && !std::exchange(preflighted, true)) {
                Ask({{"ask", "mark"}, {"mark", "sequence-preflight-begins"}});
                m_log.Line("preflight");
                Ask({{"ask", "mark"}, {"mark", "sequence-preflight-ends"}});
            }
            if (!One(input)) return "broken";
        }
        m_log.Line("postflight");
        return "finished";
    }

    bool Next(Input& input)
    {
        const Json answer = Ask({{"ask", "input"}});
        const Json& given = ObjectAt(answer, "input");
        m_total = CountAt(given, "total");
        input = {CountAt(given, "number"), BytesAt(given, "path"), TextAt(given, "toDo") == "final-action"};
        return input.number != 0;
    }

    bool One(const Input& input)
    {
        m_input = input;
        m_outputs = Json::array();
        m_finalAction = Json();
        m_outcome = "saved";
        m_sha256 = platform::Sha256OfFile(input.path);
        if (input.Is("break")) return false;
        if (!input.finalActionOnly) {
            Misbehave();
            Pass("file");
            Save();
        }
        if (!input.Is("silent")) {
            if (m_outcome == "saved") FinalAction();
            Pass("before telling");
            TellFile();
            Pass("after telling");
        }
        return true;
    }

    void Misbehave()
    {
        if (m_input.Is("crash")) std::abort();
        if (m_input.Is("exit")) std::_Exit(3);
        if (m_input.Is("open"))
            (void)platform::OpenWithShell(platform::ExecutablePath(), m_run.outputFolder + kSeparator + "opened");
        if (m_input.Is("hang"))
            for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
        if (m_input.Is("grow"))
            for (std::vector<std::string> all;; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
                all.emplace_back(std::size_t{4} << 20, 'x');
        for (int line = 0; m_input.Is("flood") && line < 20000; ++line)
            std::cerr << "a complaint of a library, number " + std::to_string(line) + '\n';
        if (m_input.Is("garbage")) std::cout << "%PDF-1.4 what a library prints" << std::endl;
        if (m_input.Is("lie")) {
            m_input.number += 1;
            Act("put", "output", m_input.path, m_input.path, [] {});
        }
    }

    /// Dies once, where the file's name says so.
    void DieIfTold(const std::string& place) const
    {
        if (m_input.Is("dies " + place) && !m_input.finalActionOnly) std::abort();
    }

    template <class Work>
    std::string Act(const char* act, const std::string& purpose, const std::string& file, const std::string& target,
                    Work work)
    {
        Pass("before intent");
        const std::string sha256 = file.empty() ? "" : platform::Sha256OfFile(file);
        const Json answer = Ask({{"ask", "act"},
                                 {"number", m_input.number},
                                 {"purpose", purpose},
                                 {"act", act},
                                 {"file", TextFromBytes(file)},
                                 {"target", TextFromBytes(target)},
                                 {"sha256", sha256}});
        Pass("after intent");
        DieIfTold("before " + purpose);
        if (m_input.Is("always dies at its " + purpose)) std::abort();
        if (TextAt(answer, "answer") == "go") work();
        DieIfTold("after " + purpose);
        return TextAt(answer, "answer");
    }

    std::string Temporary(const std::string& target) const
    {
        return FolderOf(target) + platform::TemporaryPrefix(m_tag) + std::to_string(ProcessId()) + "-1.tmp";
    }

    /// Copies the content in capitals: to a free name in the output folder, or in place.
    void Save()
    {
        const std::string folder = m_run.outputFolder;
        std::string target = m_input.path;
        if (!folder.empty()) {
            // Files of one group want one name.
            std::string name = FileName(m_input.path);
            if (const std::size_t group = name.find("group"); group != std::string::npos) name = name.substr(group);
            target = UniqueSpaced(folder + kSeparator + name, platform::NameExists);
        }
        const std::string temporary = Temporary(target);
        std::ofstream(temporary, std::ios::binary)
            << ToUpperAscii(platform::ReadWholeFile(m_input.path, 1 << 20).value_or(""));
        DieIfTold("temporary");
        const std::string answer =
            Act("put", "output", temporary, target, [&] { std::filesystem::rename(temporary, target); });
        if (answer == "refuse") m_outcome = "failed";
        std::filesystem::remove(temporary);
        if (m_outcome == "saved")
            m_outputs.push_back({{"path", TextFromBytes(target)}, {"sha256", platform::Sha256OfFile(target)}});
        m_log.Line("saved " + FileName(target));
    }

    void FinalAction()
    {
        const int code = static_cast<int>(m_run.finalAction);
        const std::string destination = m_run.destination;
        const std::string target = destination + kSeparator + FileName(m_input.path);
        if (code == 3) Final("delete", "", [&] { std::filesystem::remove(m_input.path); });
        if (code == 5)
            Final("start", destination,
                  [&] { std::ofstream(destination, std::ios::app) << FileName(m_input.path) + '\n'; });
        if (code == 7) Final("move", target, [&] { MoveSlowly(target); });
        if (code == 8) Final("put", target, [&] { CopyCompletely(target); });
    }

    /// The target appears at once, as all files of workers do.
    void CopyCompletely(const std::string& target)
    {
        std::filesystem::copy_file(m_input.path, Temporary(target));
        std::filesystem::rename(Temporary(target), target);
    }

    /// As across file systems.
    void MoveSlowly(const std::string& target)
    {
        CopyCompletely(target);
        Pass("half moved");
        DieIfTold("half moved");
        std::filesystem::remove(m_input.path);
    }

    template <class Work>
    void Final(const char* act, const std::string& target, Work work)
    {
        Act(act, "final-action", m_input.path, target, work);
        m_finalAction = {{"act", act}, {"target", TextFromBytes(target)}, {"state", "done"}};
        m_log.Line(std::string("final ") + act);
    }

    void TellFile()
    {
        if (m_input.Is("fail")) m_outcome = "failed";
        if (m_input.Is("partly")) m_outcome = "incomplete";
        Json record = {{"number", m_input.number},
                       {"path", TextFromBytes(m_input.path)},
                       {"size", 0},
                       {"sha256", m_sha256},
                       {"outcome", m_outcome},
                       {"message", ""},
                       {"milliseconds", 1},
                       {"outputs", m_outputs}};
        if (m_finalAction.is_object()) record["finalAction"] = m_finalAction;
        Tell({{"tell", "file"}, {"record", record}});
    }

    CLog m_log;
    RunDescription m_run;
    std::string m_sequence;
    std::string m_tag;
    int m_total = 0;
    Input m_input;
    Json m_outputs, m_finalAction;
    std::string m_outcome, m_sha256;
};

}  // namespace

int main(int argumentCount, char** arguments)
{
    platform::PrepareProcess();
    if (argumentCount != 2) return CFakeWorker().Run();
    // As a program that a worker opens: lives longer than the worker.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    return std::ofstream(arguments[1]).good() ? 0 : 1;
}
