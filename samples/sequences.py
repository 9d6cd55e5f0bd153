"""The sample sequences: which steps they have, and their XML form."""
from xml.sax.saxutils import quoteattr

NEW_OPEN_PASSWORD, NEW_PERMISSIONS_PASSWORD = "Leinen los!", "Kapitän-42"
PROTECT, SAVE = "QLNX_FerrulePasswordProtectCommand", "WorkflowPlaybackSaveFiles"
PERMISSIONS = ("CanAssemble", "CanCopy", "CanCreateTemplates", "CanEdit", "CanEditNotes", "CanExtractPages", "CanFillForms",
               "CanPrint", "HiResPrinting")
AES_128, AES_256 = 2, 3


class Text(str):
    """An item of the type text; a plain string is one of the type string."""


def protect(method, allowed, **passwords):
    items = {name: name in allowed for name in PERMISSIONS}
    return PROTECT, items | {"AllowAll": False, "EncryptionMethod": method, "PasswordProtect": True} | passwords


def save(**changes):
    return SAVE, {"AddToBaseName": False, "DocSaveDestType": "WorkflowPlaybackSave", "DontOverwrite": True, "FileVariation": 0,
                  "HandleOutput": True, "InsertAfterBaseName": Text(), "InsertBeforeBaseName": Text(),
                  "NumbericNaming": False, "OptimizePDF": True, "RunPDFOptimizer": False} | changes


def item(name, value):
    if isinstance(value, bool):
        kind, text = "boolean", "true" if value else "false"
    elif isinstance(value, int):
        kind, text = "integer", str(value)
    else:
        kind, text = "text" if isinstance(value, Text) else "string", value
    return f'\t\t\t\t<Item name={quoteattr(name)} type="{kind}" value={quoteattr(text)}/>\n'


def workflow(title, description, *steps):
    commands = "".join(f'\t\t<Command name="{name}" pauseBefore="false" promptUser="false">\n\t\t\t<Items>\n' +
                       "".join(item(*entry) for entry in sorted(items.items())) + "\t\t\t</Items>\n\t\t</Command>\n"
                       for name, items in steps)
    return ('<?xml version="1.0" encoding="UTF-8"?>\n<Workflow xmlns="http://ns.adobe.com/acrobat/workflow/2012" '
            f'title={quoteattr(title)} description={quoteattr(description)} majorVersion="1" minorVersion="0">\n'
            f'\t<Group label={quoteattr(title)}>\n{commands}\t</Group>\n</Workflow>\n')


SEQUENCES = {
    "protect.sequ": workflow(
        "Protect", "AES-256, one password to open and one for the permissions; copying and low-resolution printing stay allowed.",
        protect(AES_256, {"CanCopy", "CanPrint"}, Password=NEW_OPEN_PASSWORD, PermPassword=NEW_PERMISSIONS_PASSWORD), save()),
    "print-only.sequ": workflow(
        "Print only", "AES-128, opens without a password, may be printed and nothing else; saved with a suffix.",
        protect(AES_128, {"CanPrint", "HiResPrinting"}, PermPassword=NEW_PERMISSIONS_PASSWORD),
        save(AddToBaseName=True, InsertAfterBaseName=Text("-print-only"))),
    "export-text.sequ": workflow(
        "Export text", "Writes the text of each document beside it or into the output folder.",
        save(HandlerUniqueID="com.adobe.acrobat.plain-text")),
}
