// Jobs that are about a sequence file and not about documents: show, check, make and convert one.
//
// Each takes the job's JSON object and answers what stands under "answer" in its report, or the sentence with which
// the job ends as not started. All texts are those of base/Text.h. They need a host around them, because it
// alone knows its own form of sequences and which steps there are.
//
// show     {"path"}
//          -> {"path", "form": "xml"|"host", "title", "description", "holdsPasswords",
//              "sources": [{"path", "kind": "file"|"folder"}],
//              "input":  {"kind": "files"|"folder"|"ask-user"|"unknown", "words"},
//              "output": {"kind": "input-folder"|"ask-user"|"folder"|"none"|"unknown", "words"},
//              "groups": [{"label", "steps": [step]}]}
//          step: {"number", "handler", "title", "available", "runsAs", "prompts", "pauses", "line", "column",
//                 "parameters": [{"name", "type", "value"}]}
//          "title" is the host's name of the step, empty when the host does not know it; "runsAs" is there when the
//          step runs under a newer name; "prompts", "pauses", "line" and "column" are there for XML only.
//          type: "boolean" "integer" "double" "text" "string" "atom" "binary" (value: Base64) "null" "cab" (value:
//          parameters) "other" (value: null). A value that is a password reads "********".
//
// check    {"path", "settings": like those of a run, optional}
//          -> {"path", "form": "xml"|"host"|"", "ok", "errors", "warnings", "notes", "findings": [finding]}
//          finding: {"severity": "error"|"warning"|"note", "code", "text", "step", "line", "column"}
//          "step", "line" and "column" are there where they mean something, counted from 1; a tab is one column. ok:
//          no errors. Of one kind the first hundred are told and how many more there are. A file that cannot be read
//          is a finding, too. The settings say what the run brings along, so that a sequence without inputs of its
//          own is not blamed for it.
//
// new      {"path", "title", "description", "overwrite", "force", "template": "protect"|"save"|"text",
//           "protect": {"method": "aes256"|"aes128"|"rc4", "userPassword", "ownerPassword", "allow": [right]},
//           "steps": [{"handler", "label", "parameters": {name: value}}],
//           "output": {"folder", "prefix", "suffix", "converter", "overwrite", "optimize"}}
//          -> {"path", "bytes", "holdsPasswords", "findings": [finding]}
//          Only "path" and either "template" or "steps" are needed. right: "print" "print-high" "copy" "edit"
//          "annotate" "fill-forms" "assemble" "templates" "extract"; without "allow" everything is allowed. value: a
//          boolean, a number, null, a string (becomes a text), an object of more values (becomes a cab), or
//          {"type": word, "value": …} with a type word of show. "output" adds a save step at the end; templates have
//          one anyway. A sequence with errors is not written unless "force".
//
// convert  {"path", "to": "xml"|"host", "target", "overwrite", "allowLoss", "title", "description"}
//          -> {"path", "from", "to", "target", "bytes", "holdsPasswords", "losses": [finding]}
//          What a run would do otherwise than before is an error, and then nothing is written unless "allowLoss"; the
//          rest that the other form has no place for is a warning or a note. Title and description are for XML made
//          of the host's form, which has none; the title is the name of the source unless given.
//
// Files appear complete or not at all, and only their owner may read them when they hold passwords.
#pragma once

#include "base/Expected.h"
#include "protocol/JsonType.h"

[[nodiscard]] Expected<Json> ShowSequence(const Json& job);
[[nodiscard]] Expected<Json> CheckSequence(const Json& job);
[[nodiscard]] Expected<Json> NewSequence(const Json& job);
[[nodiscard]] Expected<Json> ConvertSequence(const Json& job);
