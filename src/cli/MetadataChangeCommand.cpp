#include <algorithm>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "cli/MetadataCommand.h"
#include "cli/RunArguments.h"
#include "cli/RunCommands.h"
#include "cli/RunPrinter.h"
#include "cli/Summary.h"
#include "common/MetadataImport.h"
#include "protocol/Json.h"
#include "protocol/Metadata.h"
#include "supervisor/Supervisor.h"

namespace cli {

namespace {

struct EntryOption {
    const char *option, *key;
};
constexpr EntryOption kEntryOptions[] = {
    {"--title", "Title"}, {"--subject", "Subject"}, {"--author", "Author"}, {"--keywords", "Keywords"}};

void AddEntry(MetadataChangeOrder& order, const std::string& key, const std::string& typed)
{
    if (const std::string problem = KeyProblem(key); !problem.empty()) FailUsage(problem);
    const auto text = EntryText(key, typed);
    if (!text) FailUsage(text.Error());
    if (!order.entries.emplace(key, *text).second) FailUsage("the field \"" + key + "\" is given twice");
}

MetadataChangeOrder EmptyOrder(const CArguments& arguments)
{
    RequirePlace(arguments, "changed documents");
    return {.inPlace = arguments.Has("--in-place"),
            .breakSignatures = arguments.Has("--break-signatures"),
            .rewrite = arguments.Has("--rewrite")};
}

MetadataChangeOrder ChangeOrderOf(const CArguments& arguments)
{
    MetadataChangeOrder order = EmptyOrder(arguments);
    for (const auto& [option, key] : kEntryOptions)
        if (arguments.Has(option)) AddEntry(order, key, arguments.Text(option));
    for (const std::string& typed : arguments.All("--set")) {
        const auto mark = typed.find('=');
        if (mark == typed.npos) FailUsage("--set takes a field and its text, such as Client=Smith");
        AddEntry(order, typed.substr(0, mark), typed.substr(mark + 1));
    }
    for (const std::string& key : arguments.All("--remove")) AddEntry(order, key, "");
    if (order.entries.empty())
        FailUsage("say what to change: --title, --subject, --author, --keywords, --set or --remove");
    return order;
}

int Change(const CArguments& arguments, const MetadataChangeOrder& order, std::vector<std::string> inputs,
           const Screen& screen)
{
    WorkDescription work{.kind = kMetadataChangeWork, .files = {}, .settings = LineOf(MetadataChangeJson(order))};
    RunDescription request = ReadPlaces(arguments, std::move(work), std::move(inputs));
    request.extensions = "pdf";
    return RunAndReport(ReadRun(arguments, std::move(request)), arguments, screen);
}

}  // namespace

int MetadataSetCommand(const CArguments& arguments, const Screen& screen)
{
    const MetadataChangeOrder order = ChangeOrderOf(arguments);
    return Change(arguments, order, ReadInputs(arguments, "change"), screen);
}

namespace {

struct CharacterSetWord {
    const char* word;
    CharacterSet set;
};
constexpr CharacterSetWord kCharacterSets[] = {{"auto", CharacterSet::Detect},
                                               {"utf-8", CharacterSet::Utf8},
                                               {"utf-16le", CharacterSet::Utf16LittleEndian},
                                               {"utf-16be", CharacterSet::Utf16BigEndian},
                                               {"code-page", CharacterSet::CodePage}};

char SeparatorOf(const CArguments& arguments, const std::string& path)
{
    const std::string word = arguments.Text("--separator");
    if (word == "semicolon") return ';';
    if (word.empty()) return EqualsIgnoreCaseAscii(Extension(path), "txt") ? '\t' : ',';
    return word == "tab" ? '\t' : ',';
}

std::vector<SeparatedRecord> ReadTable(const CArguments& arguments, const Screen& screen)
{
    const std::string path = ExistingPath(arguments.Text("--table"));
    const auto* const set = std::ranges::find(kCharacterSets, arguments.Text("--encoding"), &CharacterSetWord::word);
    const auto text = ReadDecodedText(path, set->set);
    if (!text) FailStart(path + ": " + text.Error());
    auto table = ParseSeparated(text->utf8, {.separator = SeparatorOf(arguments, path)});
    if (!table) FailStart(path + ": " + table.Error());
    if (!arguments.Has("--quiet")) *screen.messages << ShownPath(path) << ": read as " << text->set << '\n';
    return std::move(*table);
}

/// Collects the documents that a run would take.
class CInputLister final : public CRunObserver {
public:
    explicit CInputLister(const Screen& screen) : m_screen(screen) {}
    void FilePlanned(const PlannedFile& file) override { m_paths.push_back(file.path); }
    void Warning(const std::string& text) override
    {
        *m_screen.messages << "ferrule: warning: " << Printable(text) << '\n';
    }
    const std::vector<std::string>& Paths() const { return m_paths; }

private:
    const Screen& m_screen;
    std::vector<std::string> m_paths;
};

std::vector<std::string> DocumentsOf(const CArguments& arguments, const Screen& screen)
{
    PlanOptions plan;
    plan.engine = ReadEngine(arguments);
    plan.request.work = {.kind = kMetadataWork, .files = {}, .settings = LineOf(MetadataOrderJson({}))};
    plan.request.inputs = ReadInputs(arguments, "change");
    plan.request.noSubfolders = arguments.Has("--no-subfolders");
    plan.request.minAgeSeconds = static_cast<int>(arguments.Number("--min-age"));
    plan.request.extensions = "pdf";
    CInputLister lister(screen);
    if (const RunResult result = PlanRun(plan, lister); result.exit != ExitClass::Fine) FailStart(result.message);
    return lister.Paths();
}

/// The fields that a table may change: those that every table has, and those of --fields.
std::vector<std::string> ImportedFields(const CArguments& arguments)
{
    std::vector<std::string> fields(kPropertyColumns.begin() + kFirstInfoColumn,
                                    kPropertyColumns.begin() + kFirstInfoColumn + kInfoColumns);
    for (const std::string& part : Split(arguments.Text("--fields"), ",")) {
        const std::string key(Trim(part));
        if (const std::string problem = KeyProblem(key); !problem.empty()) FailUsage("--fields: " + problem);
        if (std::ranges::find(fields, key) == fields.end()) fields.push_back(key);
    }
    return fields;
}

/// Says what the table is good for before anything is changed.
void TellOf(const MetadataImport& import, const MetadataChangeOrder& order, std::size_t documents,
            const Screen& screen)
{
    for (const std::string& refused : import.refused)
        *screen.messages << "ferrule: " << PrintableLines(refused) << '\n';
    *screen.messages << Counted(import.records, "record", "records") << " for " << Grouped(order.ofDocuments.size())
                     << " of " << Counted(documents, "document", "documents");
    if (import.unmatched > 0) *screen.messages << ", " << Grouped(import.unmatched) << " for none of them";
    *screen.messages << '\n';
}

}  // namespace

int MetadataImportCommand(const CArguments& arguments, const Screen& screen)
{
    MetadataChangeOrder order = EmptyOrder(arguments);
    const MetadataImportRules rules{
        .fields = ImportedFields(arguments),
        .clearEmpty = arguments.Has("--clear-empty"),
        .match = arguments.Text("--match") == "name" ? FileMatch::Name : FileMatch::FullPath,
        .notAValue = kCannotOpenDocument};
    const auto table = ReadTable(arguments, screen);
    const std::vector<std::string> documents = DocumentsOf(arguments, screen);
    std::vector<std::string> names;
    for (const std::string& path : documents) names.push_back(TextFromBytes(path));
    const auto import = ImportMetadata(table, names, rules);
    if (!import) FailStart(arguments.Text("--table") + ": " + import.Error());
    for (const ImportedValue& value : import->values) {
        const auto text = EntryText(rules.fields[value.field], value.text);
        if (!text) FailStart(names[value.document] + ": " + text.Error());
        order.ofDocuments[documents[value.document]][rules.fields[value.field]] = *text;
    }
    if (!arguments.Has("--quiet") || !import->refused.empty()) TellOf(*import, order, documents.size(), screen);
    if (!import->refused.empty()) FailStart("nothing was changed; write full paths, or take these records out");
    if (order.ofDocuments.empty()) return kExitFine;
    std::vector<std::string> inputs;
    for (const auto& [path, entries] : order.ofDocuments) inputs.push_back(KeptAsItIs(path));
    return Change(arguments, order, std::move(inputs), screen);
}

}  // namespace cli
