// What the outcomes of very many files come to. Whoever shows it, as a page, a text or JSON, finds every figure here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "protocol/FileRecord.h"

/// One file of a list. Paths are bytes, messages UTF-8.
struct ListedFile {
    std::string path = {};
    std::uint64_t size = 0;
    std::int64_t milliseconds = 0;
    std::optional<std::uint64_t> sizeAfter = {};
};

/// The first files of which something is true, and how many there are.
struct FileList {
    static constexpr std::size_t kMost = 20;

    std::uint64_t count = 0;
    std::vector<ListedFile> first = {};

    void Add(const ListedFile& file);
    std::uint64_t More() const { return count - first.size(); }
};

/// Counts on a logarithmic scale; exact counts, so that shares and medians are as exact as the steps.
class CLogHistogram {
public:
    static constexpr int kStepsOfDecade = 5, kDecades = 8;
    static constexpr std::size_t kSteps = static_cast<std::size_t>(kStepsOfDecade) * kDecades;

    /// Values from 1 to below 10^8; others count as the nearest of these.
    void Add(double value);
    std::uint64_t Count() const { return m_count; }
    const std::array<std::uint64_t, kSteps>& Steps() const { return m_steps; }
    /// Where a step begins; that of kSteps is the end.
    static double Begin(std::size_t step);
    /// The middle of the step in which this share of all values ends, 0 without values.
    double Quantile(double share) const;

private:
    std::array<std::uint64_t, kSteps> m_steps{};
    std::uint64_t m_count = 0;
};

/// How many files of a size took so long: both axes logarithmic.
struct TimeGrid {
    static constexpr int kStepsOfDecade = 6, kColumns = 7 * kStepsOfDecade, kRows = 6 * kStepsOfDecade;
    static constexpr double kSmallest = 1000;  ///< bytes
    static constexpr double kShortest = 1;     ///< milliseconds

    struct Cell {
        std::uint64_t files = 0, notSaved = 0;
    };
    std::array<Cell, static_cast<std::size_t>(kColumns) * kRows> cells{};

    void Add(std::uint64_t size, std::int64_t milliseconds, bool saved);
    const Cell& At(int column, int row) const { return cells[static_cast<std::size_t>(row * kColumns + column)]; }
};

/// Files that have the same outcome for the same reason.
struct ReasonGroup {
    FileOutcome outcome = FileOutcome::Failed;
    std::string reason = {};   ///< without what differs from file to file
    std::string message = {};  ///< of the first one, as it stands
    FileList files = {};
};

/// Where a figure comes from: a record, a journal, a packed run.
struct RecordSource {
    std::string path = {};  ///< as somebody named it
    std::string run = {};   ///< empty where it tells none
    std::uint64_t files = 0;
    bool trial = false;  ///< nothing was done really
};

struct OutcomeSums {
    std::uint64_t files = 0, bytes = 0;
    std::int64_t milliseconds = 0;
};

/// Sums are exact. Memory: bounded, whatever the number of files is.
class CRunSums {
public:
    using ProtectionPair = std::pair<std::optional<ProtectionState>, std::optional<ProtectionState>>;
    struct ProtectionOrder {
        bool operator()(const ProtectionPair& one, const ProtectionPair& other) const;
    };
    using FinalActionKind = std::pair<std::optional<Act>, FinalActionRecord::State>;

    static constexpr std::size_t kMostReasons = 200;
    static constexpr std::size_t kMostProblems = 50;
    /// Below this size the time per megabyte says nothing.
    static constexpr std::uint64_t kLeastForSpeed = 10'000;

    void Add(const FileRecord& record);
    /// Something could not be told: a sentence. The report is incomplete then.
    void AddProblem(std::string sentence);
    /// Something to know that takes nothing from the report.
    void AddNote(std::string sentence) { notes.push_back(std::move(sentence)); }
    /// The lists in the order in which they are shown. After the last Add.
    void Complete();

    bool Incomplete() const { return problemCount != 0; }
    const OutcomeSums& Of(FileOutcome outcome) const { return outcomes[static_cast<std::size_t>(outcome)]; }

    OutcomeSums all = {};
    std::array<OutcomeSums, kFileOutcomes> outcomes{};
    std::vector<ReasonGroup> reasons = {};  ///< worst outcome first, then the most files
    FileList otherReasons = {};             ///< beyond kMostReasons

    CLogHistogram timePerFile = {};      ///< milliseconds
    CLogHistogram timePerMegabyte = {};  ///< milliseconds for 1,000,000 bytes of input
    TimeGrid timeBySize = {};
    std::vector<ListedFile> slowest = {};             ///< the slowest first
    std::vector<ListedFile> slowestPerMegabyte = {};  ///< of the files with kLeastForSpeed bytes or more

    struct {
        std::uint64_t files = 0;    ///< with results whose size is known
        std::uint64_t unknown = 0;  ///< with results of unknown size
        std::uint64_t before = 0, after = 0, results = 0;
        std::uint64_t smaller = 0, same = 0, larger = 0;
    } sizes;
    std::vector<ListedFile> grownMost = {};  ///< by bytes

    std::map<ProtectionPair, std::uint64_t, ProtectionOrder> protection = {};
    std::uint64_t protectionUnknown = 0;
    std::map<FinalActionKind, FileList> finalActions = {};
    FileList signaturesBroken = {};

    std::vector<RecordSource> sources = {};
    std::vector<std::string> problems = {};  ///< the first kMostProblems
    std::uint64_t problemCount = 0;
    std::vector<std::string> notes = {};

private:
    void AddReason(const FileRecord& record, const ListedFile& file);
    void AddSizes(const FileRecord& record, const ListedFile& file);

    std::map<std::pair<FileOutcome, std::string>, std::size_t> m_places;  // in `reasons`
};

/// How long a megabyte of the file took, in milliseconds.
[[nodiscard]] double MillisecondsPerMegabyte(const ListedFile& file);
