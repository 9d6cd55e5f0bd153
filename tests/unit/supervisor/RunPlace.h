#pragma once

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/Paths.h"
#include "supervisor/Supervisor.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

/// Keeps what it is told.
class CNotes : public CRunObserver {
public:
    void FilePlanned(const PlannedFile& file) override { planned.push_back(file); }
    void Planned(const PlanSummary& summary) override { summaries.push_back(summary); }
    void FileDone(const FileRecord& record, const RunProgress& progress) override
    {
        done.push_back(record);
        last = progress;
    }
    void RecordLine(const std::string& json) override { lines.push_back(json); }
    void Warning(const std::string& text) override { warnings.push_back(text); }

    /// What was told of the file last.
    FileRecord Of(const std::string& name) const
    {
        for (auto record = done.rbegin(); record != done.rend(); ++record)
            if (std::filesystem::path(record->path).filename() == name) return *record;
        return {.message = "<nothing was told of " + name + ">"};
    }

    std::vector<PlannedFile> planned;
    std::vector<PlanSummary> summaries;
    std::vector<FileRecord> done;
    std::vector<std::string> lines, warnings;
    RunProgress last;
};

/// Folders for inputs, results, final actions and settings, and the request to run the fake worker over them.
class CRunPlace {
public:
    CRunPlace()
    {
        HeedInterrupts();
        for (const char* name : {"in", "out", "done", "settings"}) folder.MakeFolder(name);
        SetVariable(platform::kApplicationDataVariable, folder / "settings");
        SetVariable("FAKE_KILL", "");
        SetVariable("FAKE_BLIND", "");
        SetVariable("FAKE_COUNT", folder / "count");
        options.engine = {.hostProgram = FAKE_WORKER, .plugIns = {"/a/plug-in"}, .jobs = 2, .timeoutSeconds = 60};
        options.request.work = SequenceWork("a sequence");
        options.request.inputs = {folder / "in"};
        options.request.outputFolder = folder / "out";
        options.recordPath = folder / "record.jsonl";
        options.logPath = folder / "log.txt";
    }

    void FinalAction(int code)
    {
        options.request.finalAction = static_cast<::FinalAction>(code);
        options.request.destination = folder / (code == 5 ? "started.txt" : "done");
    }
    void InPlace() { options.request.outputFolder.clear(); }
    /// The file's text is its name.
    void Input(const std::string& name) { folder.Write("in/" + name, "text of " + name); }

    RunResult Run() { return RunPlanned(options, notes); }
    std::string Text(const std::string& name) const { return FileBytes(folder / name); }
    std::vector<std::string> Lines(const std::string& name) const
    {
        std::vector<std::string> lines;
        std::istringstream text(Text(name));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }
    /// The files whose blocks are in the log, in its order.
    std::vector<std::string> FilesLogged() const
    {
        std::vector<std::string> files;
        for (const std::string& line : Lines("log.txt"))
            if (const auto at = line.find(": file "); at != std::string::npos)
                files.push_back(line.substr(at + 7, line.size() - at - 8));
        return files;
    }
    /// Names and texts of the files in a folder.
    std::map<std::string, std::string> Files(const std::string& name) const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder / name))
            files[entry.path().filename().string()] = FileBytes(entry.path().string());
        return files;
    }

    CTemporaryFolder folder;
    RunOptions options;
    CNotes notes;
};
