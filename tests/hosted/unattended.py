"""Runs the built programs as a scheduled job would: environment variables in front of the host, nobody watching."""
import itertools
import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path


def from_environment(name, path):
    """Where something is: as the test run says, or below the project's folder."""
    return Path(os.environ.get(name) or Path(__file__).resolve().parents[2] / path)


HOST = from_environment("FERRULE_HOST_PROGRAM", "build/release/bin/ferrule-host")
CAB_WRITER = from_environment("FERRULE_CAB_WRITER", "build/release/bin/cab-writer")
CORPUS = from_environment("FERRULE_CORPUS", "../shared/corpus")
FOREIGN = ("--plugin", from_environment("FERRULE_PLUG_IN", "build/release/bin/plug_ins/Ferrule.api"),  # and one of others
           "--plugin", from_environment("FERRULE_FOREIGN_STEPS", "build/release/tests/hosted/ForeignSteps.api"))
VARIABLES = ("FERRULESEQU", "FERRULEFINAL", "FERRULEDEST", "FERRULEALTPATH", "EXECUTEINSTEPS", "FERRULENOPROGRESS",
             "FERRULEALTOUTPUTPATH", "FERRULEFILEEXT", "FERRULENOSUBFOLDERS")


class Outcome:
    """What one unattended run left: exit code, log lines without their numbers, standard error."""

    def __init__(self, code, log, errors):
        self.code, self.raw_log, self.errors = code, log, errors
        self.lines = [re.sub(rb"^\d+: ", b"", line).decode("utf-8", "surrogateescape")
                      for line in log.split(b"\r\n") if line]

    def has(self, text):
        return any(text in line for line in self.lines)

    def values(self, name):
        """The values of all name/value entries of this name, whatever their indent."""
        prefix = name + " : "
        return [line.lstrip("\t")[len(prefix):] for line in self.lines if line.lstrip("\t").startswith(prefix)]

    def __str__(self):
        return f"exit code {self.code}\n--- log\n" + "\n".join(self.lines) + f"\n--- standard error\n{self.errors}"


class Workplace:
    """A scratch folder with in, out, done and a settings folder of its own."""

    def __init__(self):
        self.root = Path(tempfile.mkdtemp(prefix="ferrule-test-"))
        for name in ("in", "out", "done", "config"):
            (self.root / name).mkdir()
        self.input, self.output, self.done = self.root / "in", self.root / "out", self.root / "done"

    def close(self):
        subprocess.run(["chmod", "-R", "u+rwX", str(self.root)], check=False)
        shutil.rmtree(self.root, ignore_errors=True)

    @staticmethod
    def names(folder):
        return sorted(path.name for path in folder.iterdir())

    @staticmethod
    def clear(*folders):
        for path in itertools.chain(*(folder.iterdir() for folder in folders)):
            path.unlink()

    @property
    def log(self):
        return self.root / "config" / "Quillon" / "Ferrule" / "FerruleLog.txt"

    def told(self, path):
        """How the programs name a path that is found here."""
        return str(path)

    def run(self, variables, arguments=(), timeout=120, program=None):
        environment = {key: value for key, value in os.environ.items() if key not in VARIABLES}
        environment["XDG_CONFIG_HOME"] = str(self.root / "config")
        environment.update({key: os.fsdecode(value) if isinstance(value, (bytes, Path)) else str(value)
                            for key, value in variables.items()})
        self.log.unlink(missing_ok=True)
        done = subprocess.run([str(program or HOST), *map(str, arguments)], env=environment, cwd=self.root, timeout=timeout,
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)
        log = self.log.read_bytes() if self.log.exists() else b""
        return Outcome(done.returncode, log, done.stderr.decode("utf-8", "replace"))

    def run_folder(self, sequence, final=0, destination="", arguments=(), output=True, **more):
        variables = {"FERRULESEQU": sequence, "FERRULEFINAL": final, "FERRULEDEST": destination,
                     "FERRULEALTPATH": self.input, "FERRULENOPROGRESS": "yes"}
        if output:
            variables["FERRULEALTOUTPUTPATH"] = self.output
        variables.update(more)
        return self.run(variables, arguments)

    def sequence(self, name, commands, sources=()):
        """Writes a sequence in XML form; commands are (handler, {name: (type, value)}) pairs."""
        def escape(text):
            return (str(text).replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;").replace("\r", "&#xD;")
                    .replace("\n", "&#xA;"))

        text = '<?xml version="1.0" encoding="UTF-8"?>\n<Workflow title="test" description="">\n'
        if sources:
            text += "<Sources>" + "".join(f'<{kind} path="{escape(path)}"/>' for kind, path in sources) + "</Sources>\n"
        text += '<Group label="Steps">\n'
        for handler, items in commands:
            text += f'<Command name="{escape(handler)}" pauseBefore="false" promptUser="false"><Items>'
            text += "".join(f'<Item name="{escape(key)}" type="{kind}" value="{escape(value)}"/>'
                            for key, (kind, value) in items.items())
            text += "</Items></Command>\n"
        text += "</Group>\n</Workflow>\n"
        path = self.root / name
        path.write_text(text, encoding="utf-8")
        return path

    def host_sequence(self, name, entries):
        """Writes a sequence in the host's own form; entries are (type, "Cab:Path:To:Key", value) triples."""
        path = self.root / name
        lines = "".join(f"{kind}\t{key}\t{value}\n" for kind, key, value in entries)
        subprocess.run([str(CAB_WRITER), str(path)], input=lines.encode("utf-8", "surrogateescape"), check=True)
        return path


PROTECT = "QLNX_FerrulePasswordProtectCommand"
SAVE = "WorkflowPlaybackSaveFiles"


def protect_items(method=3, password="open sesame", permissions="owner secret", **flags):
    items = {"EncryptionMethod": ("integer", method), "PasswordProtect": ("boolean", "true")}
    if password:
        items["Password"] = ("string", password)
    if permissions:
        items["PermPassword"] = ("string", permissions)
    for name, value in flags.items():
        items[name] = ("boolean", "true" if value else "false")
    return items


def save_items(kind="WorkflowPlaybackSave", **more):
    return {"DocSaveDestType": ("string", kind), **more}


def minimal_pdf(text="Hello", pages=1):
    """A small valid document with a line of text on each page."""
    content = "BT /F 18 Tf 20 100 Td (%s %d) Tj ET"
    return pdf_of_pages([("/MediaBox[0 0 300 200]", content % (text, number + 1)) for number in range(pages)])


def pdf_of_pages(pages, info=None):
    """A document with these pages, each the entries of its dictionary and its content; its font is /F. `info`: the texts of
    its document information."""
    objects = [b"<</Type/Catalog/Pages 2 0 R>>",
               b"<</Type/Pages/Count %d/Kids[%s]>>" % (len(pages), b" ".join(b"%d 0 R" % (4 + 2 * n) for n in range(len(pages)))),
               b"<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>"]
    for number, (entries, content) in enumerate(pages):
        objects.append(b"<</Type/Page/Parent 2 0 R%s/Resources<</Font<</F 3 0 R>>>>/Contents %d 0 R>>"
                       % (entries.encode("latin-1"), 5 + 2 * number))
        content = content.encode("latin-1")
        objects.append(b"<</Length %d>>stream\n%s\nendstream" % (len(content), content))
    trailer = b""
    if info:
        strings = (b"/%s<feff%s>" % (key.encode(), text.encode("utf-16-be", "surrogatepass").hex().encode()) for key, text in info.items())
        objects.append(b"<<%s>>" % b"".join(strings))
        trailer = b"/Info %d 0 R" % len(objects)
    data, offsets = b"%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        offsets.append(len(data))
        data += b"%d 0 obj\n%s\nendobj\n" % (number, body)
    table = len(data)
    data += b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1)
    data += b"".join(b"%010d 00000 n \n" % offset for offset in offsets)
    return data + b"trailer<</Size %d/Root 1 0 R%s>>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, trailer, table)


def tool(*arguments, **options):
    """Runs an independent PDF tool; answers (exit code, standard output)."""
    words = [argument if isinstance(argument, bytes) else os.fsencode(argument) for argument in arguments]
    done = subprocess.run(words, stdin=subprocess.DEVNULL, capture_output=True, timeout=60, check=False,
                          **options)
    return done.returncode, done.stdout


def page_count(path, password=None):
    extra = ["-upw", password] if password else []
    code, out = tool("pdfinfo", *extra, path)
    match = re.search(rb"^Pages:\s+(\d+)", out, re.M)
    return int(match.group(1)) if match else None


def text_of(path, password=None):
    extra = ["-upw", password] if password else []
    return tool("pdftotext", *extra, path, "-")[1]
