#include "SequenceFixture.h"

namespace {

using SequenceCheck = CSequenceJobs;

/// With inputs and an output folder, so that only the steps are left to be blamed.
const Json kSupplied = {{"inputs", Json::array({"/in"})}, {"output", "/out"}};

}  // namespace

TEST_F(SequenceCheck, FindsWhereResultsAndInputsAreAtRisk)
{
    const std::string noTarget = Step("WorkflowPlaybackSaveFiles"),
                      overwrite = Item("DontOverwrite", "boolean", "false"),
                      suffix = Item("AddToBaseName", "boolean", "true") + Item("InsertAfterBaseName", "text", "-x"),
                      leaving = Item("AddToBaseName", "boolean", "true") + Item("InsertAfterBaseName", "text", "/x"),
                      folder = Item("PreselectedFolderPath", "text", "/named/"),
                      password = Item("EncryptionMethod", "integer", "3") +
                                 Item("PasswordProtect", "boolean", "true") + Item("Password", "text", "secret") +
                                 Item("CanExtractPages", "boolean", "true");
    const Json onlyInput = {{"inputs", Json::array({"/in"})}},
               deleting = {{"inputs", Json::array({"/in"})}, {"finalAction", "delete"}},
               copying = {{"inputs", Json::array({"/in"})}, {"finalAction", "copy"}};
    const struct {
        std::string steps;
        Json settings;
        const char* codes;
    } rows[] = {
        {Save(), kSupplied, ""},
        {Save(), Json::object(), "note no-source, note saves-beside-input 1"},
        {noTarget, kSupplied, "warning save-without-target 1"},
        {Save(overwrite), kSupplied, ""},
        {Save(overwrite), onlyInput, "warning save-in-place 1"},
        {Save(overwrite + suffix), onlyInput, "note saves-beside-input 1"},
        {Save(folder), onlyInput, "warning save-folder-unused 1, note saves-beside-input 1"},
        {Save(leaving), kSupplied, "error affix-leaves-folder 1"},
        {Save(Item("HandlerUniqueID", "string", "com.adobe.acrobat.plain-text")), kSupplied, ""},
        {Save(Item("HandlerUniqueID", "string", "no.such.converter")), kSupplied, "error converter-not-available 1"},
        {Save(Item("RunPDFOptimizer", "boolean", "true")), kSupplied, "warning preset-outside 1"},
        {Save() + Save(), kSupplied, "note saves-more-than-once"},
        {Save() + Protect(password), kSupplied,
         "note holds-passwords, note metadata-readable 2, warning step-after-save 2"},
        {Save() + Protect(password) + Save(), kSupplied,
         "note saves-more-than-once, note holds-passwords, note metadata-readable 2"},
        {Protect(password), onlyInput, "warning saves-nothing, note holds-passwords, note metadata-readable 1"},
        {Protect(password), copying, "warning saves-nothing, note holds-passwords, note metadata-readable 1"},
        {Protect(password), deleting, "error saves-nothing, note holds-passwords, note metadata-readable 1"},
    };
    for (const auto& row : rows) EXPECT_EQ(Check(Steps(row.steps), row.settings), row.codes) << row.steps;
}

TEST_F(SequenceCheck, FindsWhatStepsLack)
{
    const struct {
        std::string steps;
        const char* codes;
    } rows[] = {
        {Step("CALS_PREFLIGHT_CMD", Item("CALS_PREFLIGHT_CMD_PROFILE_NAME", "text", "P")),
         "error step-not-available 1, note profile-outside 1"},
        {Step(" "), "error step-without-handler 1"},
        {"<Command name='DocSecurity' promptUser='true'/>", "warning prompts 1, warning removes-security 1"},
        {"<Command name='QLNX_FerrulePurgeIndexCommand' promptUser='true' pauseBefore='true'><Items>" +
             Item("File", "string", Folder().Write("there", "")) + "</Items></Command>",
         "note prompts 1, note pauses 1"},
        {Step("QLNX_FerrulePurgeIndexCommand"), "warning file-not-named 1"},
        {Step("QLNX_FerruleProcessWithExternalAppCommand", Item("File", "text", "/no/such")),
         "warning file-missing 1"},
        {Step("QLNX_FerrulePurgeIndexCommand", Item("File", "integer", "1") + Item("file", "text", "x")),
         "note holds-passwords, error parameter-type 1, error parameter-unknown 1, warning file-not-named 1"},
        {Step("OpenInfo", Item("Magnification", "text", "\xE9\x80\x82")), "warning localised-value 1"},
        {Step("OpenInfo", Item("Magnification", "text", "100%")), ""},
        {Step("CropPages", "<Items name='Crop'>" + Item("LeftText", "text", "0 \xE7\x82\xB9") + "</Items>"),
         "warning localised-value 1"},
    };
    for (const auto& row : rows) EXPECT_EQ(Check(Steps(row.steps + Save()), kSupplied), row.codes) << row.steps;
}

TEST_F(SequenceCheck, FindsProtectionThatDoesNotProtect)
{
    const std::string method = Item("EncryptionMethod", "integer", "3"),
                      on = Item("PasswordProtect", "boolean", "true"), open = Item("Password", "text", "one"),
                      owner = Item("PermPassword", "string", "two"),
                      extract = Item("CanExtractPages", "boolean", "true"),
                      noCopy = Item("CanCopy", "boolean", "false"),
                      table = "<Items name='FileMapping'>" + Item("NumItems", "integer", "2") +
                              Item("0", "string", "a.pdf") + Item("1", "string", "x") + "</Items>",
                      useTable = Item("UseFileMapping", "boolean", "true");
    const struct {
        std::string items;
        const char* codes;
    } rows[] = {
        {"", "warning protects-nothing"},
        {method + extract + open, "warning protects-nothing"},
        {method + open + owner, "note passwords-count"},
        {method + extract + Item("PasswordProtect", "string", "true") + open,
         "error parameter-type, warning protects-nothing"},
        {method + on + extract, "warning protects-nothing"},
        {method + on + extract + open, ""},
        {method + on + extract + open + owner, "note nothing-restricted"},
        {method + on + noCopy + owner, ""},
        {method + on + noCopy + open, "warning permissions-without-owner-password"},
        {method + on + noCopy, "warning no-password, warning permissions-without-owner-password"},
        {method + on + noCopy + owner + Item("Password", "text", " two"),
         "warning same-password, warning password-trimmed"},
        {Item("EncryptionMethod", "integer", "1") + on + extract + open, "warning weak-encryption"},
        {Item("EncryptionMethod", "integer", "9") + on + extract + open, "error parameter-value"},
        {on + extract + open, "note encryption-default"},
        {Item("EncryptionMethod", "text", "3") + on + extract + open,
         "error parameter-type, note encryption-default"},
        {Item("Pasword", "text", "x") + method + on + extract + open, "error parameter-unknown"},
        {Item("Colour", "text", "x") + method + on + extract + open, "warning parameter-unknown"},
        {method + on + extract + Item("Password", "text", "a&#x7F;b"), "error password-refused"},
        {method + on + extract + Item("Password", "text", "\xD7\x90\xD7\x91 1"), "error password-refused"},
        {method + on + extract + Item("Password", "text", "\xD7\x90 a \xD7\x91"), "error password-refused"},
        {method + on + extract + Item("Password", "text", "\xD7\x90 1 \xD7\x91"), ""},
        {Item("EncryptionMethod", "integer", "2") + on + extract + Item("Password", "text", "\xD0\xBF"),
         "error password-refused"},
        {method + on + extract + Item("Password", "text", std::string(256, 'p')), "warning password-cut"},
        {method + on + noCopy + owner + useTable, "warning empty-table"},
        {method + on + noCopy + owner + Item("AllowAll", "boolean", "true"),
         "note nothing-restricted, warning restrictions-void"},
        {method + on + noCopy + owner + table, "warning unused-table"},
        {method + on + noCopy + owner + table + useTable, ""},
        {method + extract + Item("SearchForPassword", "boolean", "true") + Item("SearchRegex", "text", "No (\\d+)"),
         ""},
        {method + extract + open + Item("SearchForPassword", "boolean", "true"),
         "error page-password, note page-password"},
        {method + on + extract + Item("ExtractPasswordFromPage", "boolean", "true"), "error page-password"},
        {method + on + extract + open + Item("UseDataSourceForOpenPassword", "boolean", "true"),
         "error password-source-unused"},
    };
    for (const auto& row : rows) {
        std::string codes;
        const Json report =
            Answer(CheckSequence({{"path", Steps(Protect(row.items) + Save())}, {"description", kSupplied}}));
        for (const Json& finding : report["findings"])
            if (finding["code"] != "holds-passwords" && finding["code"] != "metadata-readable")
                codes += (codes.empty() ? "" : ", ") + finding["severity"].get<std::string>() + ' ' +
                         finding["code"].get<std::string>();
        EXPECT_EQ(codes, row.codes) << row.items;
    }
}

TEST_F(SequenceCheck, SaysOnceThatThereIsMoreOfAKind)
{
    std::string steps = Step("NoSuchStep");
    for (int number = 0; number < 150; ++number) steps += Step("CALS_PREFLIGHT_CMD");
    const Json report = Answer(CheckSequence({{"path", Steps(steps + Save())}, {"description", kSupplied}}));
    const Json& findings = report["findings"];
    ASSERT_EQ(findings.size(), 101u);
    EXPECT_EQ(findings[100]["text"], "... and 51 more of this kind.");
    EXPECT_EQ(findings[100]["severity"], "error");
}

TEST_F(SequenceCheck, JudgesTheHostsSecurityStepAlike)
{
    const std::string standard = Item("CryptHandler", "atom", "Standard"), user = Item("userPW", "string", "one");
    const auto settings = [](const std::string& items) {
        return "<Items name='SecuritySettings'>" + items + "</Items>";
    };
    const struct {
        std::string items;
        const char* codes;
    } rows[] = {
        {standard, "error no-settings 1"},
        {standard + settings(user), "note holds-passwords"},
        {standard + settings(user + Item("keyLength", "integer", "5") + Item("revision", "integer", "2")),
         "note holds-passwords, warning weak-encryption 1"},
        {standard + settings(user + Item("encryptMethod", "integer", "2")),
         "note holds-passwords, warning weak-encryption 1"},
        {standard + settings(user + Item("perms", "integer", "-4")),
         "note holds-passwords, warning permissions-without-owner-password 1"},
        {standard + settings(user + Item("hasUserPW", "boolean", "false")),
         "note holds-passwords, warning no-password 1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Check(Steps(Step("DocSecurity", row.items) + Save()), kSupplied), row.codes) << row.items;
}

TEST_F(SequenceCheck, FindsInputsThatAreNotThere)
{
    const auto sources = [&](const std::string& list) {
        return Check(Sequence("<Sources>" + list + "</Sources><Group label='g'>" + Save() + "</Group>"),
                     {{"output", "/out"}});
    };
    const std::string here = Folder().Write("a.pdf", "x");
    EXPECT_EQ(sources("<File path='" + here + "'/>"), "");
    EXPECT_EQ(sources("<File path='" + here + "x'/>"), "warning source-missing");
    EXPECT_EQ(sources("<Folder path='" + Folder().Path() + "'/>"), "warning folder-source");
    EXPECT_EQ(sources("<File path='" + here + "'/><Folder path='" + Folder().Path() + "'/>"),
              "warning mixed-sources");
}

TEST_F(SequenceCheck, TellsWhyAFileIsNoSequence)
{
    const struct {
        const char* bytes;
        const char* code;
        int line, column;
    } rows[] = {{"", "not-a-sequence", 0, 0},
                {"%PDF-1.7", "not-a-sequence", 0, 0},
                {"<Workflow>\n <Group a></Workflow>", "not-xml", 2, 10},
                {"<Batch/>", "wrong-root", 1, 1},
                {"<Workflow><Group/></Workflow>", "no-commands", 1, 1}};
    for (const auto& row : rows) {
        const Json report = Answer(CheckSequence({{"path", Folder().Write("x.sequ", row.bytes)}}));
        EXPECT_EQ(report["ok"], false) << row.bytes;
        ASSERT_EQ(report["findings"].size(), 1u) << row.bytes;
        const Json& finding = report["findings"][0];
        EXPECT_EQ(finding["code"], row.code) << row.bytes;
        EXPECT_EQ(finding.value("line", 0), row.line) << row.bytes;
        EXPECT_EQ(finding.value("column", 0), row.column) << row.bytes;
    }
    EXPECT_EQ(Check(Folder() / "none.sequ"), "error not-found");
    EXPECT_EQ(Check(Folder().Path()), "error not-found");
}
