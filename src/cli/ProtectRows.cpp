#include "cli/CommandRows.h"

namespace cli {

namespace {

std::vector<OptionRow> ProtectionOptions()
{
    return {
        {.name = "--owner-password-file",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "File whose first line is the password that gives all rights, UTF-8."},
        {.name = "--open-password-file",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "File whose first line is the password that opens the documents, UTF-8."},
        {.name = "--passwords-from",
         .kind = ValueKind::File,
         .valueName = "TABLE",
         .help = "File with a password to open for each document: one a line, as in \"report.pdf, secret\", UTF-8. "
                 "The first comma outside double quotes separates. Folders and letter case of names do not count. A "
                 "document that is not listed gets the password of --open-password-file; without one it fails and "
                 "stays as it is, also when there is an owner password."},
        {.name = "--allow",
         .kind = ValueKind::Text,
         .valueName = "LIST",
         .help = "What stays allowed without the owner password, separated by commas: print (at low resolution, also "
                 "print-low), print-high, copy, edit, annotate (also comment), fill-forms, assemble, templates, "
                 "extract; or all, or none.",
         .fallback = "all"},
        {.name = "--method",
         .kind = ValueKind::Choice,
         .valueName = "METHOD",
         .help = "How to encrypt.",
         .fallback = "aes256",
         .choices = {"aes256", "aes128", "rc4"}}};
}

std::vector<OptionRow> InputOptions()
{
    return {
        OptionOfRun("--output", "Existing folder for the protected documents. A name that is taken gets a number."),
        {.name = "--in-place",
         .help = "Put each protected document in the place of its input. Without --keep-originals the inputs are "
                 "gone for good then: whoever loses the passwords has lost the documents."},
        OptionOfRun("--keep-originals"),
        FilesFromOption("Protect"),
        OptionOfRun("--no-subfolders"),
        OptionOfRun("--min-age"),
        {.name = "--password-file",
         .kind = ValueKind::File,
         .valueName = "FILE",
         .help = "Passwords to try on inputs that are protected already, one a line, UTF-8; blanks count. Those "
                 "that one of them gives all rights are protected anew."}};
}

}  // namespace

CommandRow ProtectRow()
{
    CommandRow row{
        .name = "protect",
        .summary = "give documents passwords and restrictions",
        .text =
            "Encrypts every PDF file that is named, or stands in a folder that is named, with the same settings. It "
            "is a run like that of a sequence: several processors, a record, --resume, and \"ferrule undo\". A "
            "file that is found twice is one file; of a link and its file it is the file.\n\n"
            "Nothing is written for a document that cannot be opened, is protected already and not opened with all "
            "rights, or is signed or certified; nor in the place of one that is damaged, changes meanwhile, or is "
            "reached by a link. Each of these fails, with the reason, and stays as it is.\n\n"
            "Passwords are read from files so that they stay out of the command line. They get into no log, record "
            "or journal. The files must not change until the run has come to its end, and should be readable for you "
            "alone.",
        .operands = {{.name = "PATH",
                      .kind = ValueKind::Path,
                      .help = "Files and folders to protect.",
                      .optional = true,
                      .repeatable = true}},
        .examples = {
            {"A folder, printing allowed, results into another folder:",
             "ferrule protect in --output out --owner-password-file owner.txt --allow print,print-high"},
            {"In place, with a way back:",
             "ferrule protect in --in-place --keep-originals kept --open-password-file open.txt"},
            {"A password of its own for each document; what would that do?",
             "ferrule protect in -o out --passwords-from table.txt --owner-password-file owner.txt --dry-run"},
            {"The files that another program has listed:",
             "ferrule protect --files-from list.txt -o out --open-password-file open.txt"}}};
    AddSection(row, "Protection", ProtectionOptions());
    AddSection(row, "Inputs and results", InputOptions());
    AddSection(row, "Workers and limits", WorkerOptions());
    AddSection(row, "Going on and trying out",
               {OptionOfRun("--resume"), OptionOfRun("--retry-failed"), OptionOfRun("--dry-run")});
    AddSection(row, "Reports",
               {OptionOfRun("--record"), OptionOfRun("--report"), OptionOfRun("--log"), OptionOfRun("--json"),
                OptionOfRun("--quiet")});
    AddSection(row, "What is left alone otherwise",
               {{.name = "--break-signatures",
                 .help = "Protect signed and certified documents, too; their signatures are worthless then."},
                OptionOfRun("--accept-damaged")});
    AddSection(row, "", ProgramOptions());
    return row;
}

}  // namespace cli
