"""Where results go and under which name, through sequences in the host's own form, which can say all of it, and what
becomes of the input afterwards."""
import os
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, page_count, pdf_of_pages, protect_items, save_items, text_of, tool

# Eight by eight grey pixels: one quantisation table, two coding tables with one code each, one block.
JPEG = bytes.fromhex("ffd8" "ffe000104a46494600010101004800480000" "ffdb004300" + "01" * 64 + "ffc0000b080008000801011100"
                     "ffc4001400" "01" + "00" * 15 + "00" "ffc4001410" "01" + "00" * 15 + "00"
                     "ffda0008010100003f00" "3f" "ffd9")

NAME, FIRST, SECOND = "Übersicht März 1.pdf", "Übersicht März 1 (1).pdf", "Übersicht März 1 (2).pdf"
INPUT, OTHER = minimal_pdf("Input"), minimal_pdf("Other")
COPIED, MOVED, NOT_MOVED = "File is copied to", "File is moved to", "Can't move file to"
NO_FOLDER, NO_PROGRAM = "The destination folder does not exist: ", "The program cannot be found: "


def host_sequence(place, output, inputs=None, commands=()):
    entries = [("cab", "Commands", ""), ("cab", "Input", ""), ("cab", "Output", "")]
    for number, (handler, parameters) in enumerate(commands):
        base = f"Commands:{number}:"
        entries += [("atom", base + "HandlerName", handler), ("text", base + "Title", handler),
                    ("integer", base + "UIPolicy", 3), ("cab", base + "Config", ""), ("cab", base + "Params", "")]
        entries += [(kind, f"{base}Params:{key}", value) for key, (kind, value) in parameters.items()]
    entries += [("integer", "Input:FileVariation", 2)] if inputs is None else inputs
    entries += [(kind, "Output:" + key, value) for key, (kind, value) in output.items()]
    return place.host_sequence("rules.sequ", entries)


def folder(path):
    return {"PreselectedFolderPath:FS": ("atom", "DOS"), "PreselectedFolderPath:DI": ("string", str(path))}


class OutputRules(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.document = minimal_pdf("Rules")
        (self.place.input / "ein Dokument.pdf").write_bytes(self.document)

    def run_rules(self, output, alternative=False, **more):
        sequence = host_sequence(self.place, output, commands=[(PROTECT, protect_items())])
        return self.place.run_folder(sequence, output=alternative, **more)

    def restricted(self):
        """Takes the document out of the input folder and forbids everybody to change it."""
        path = (self.place.input / "ein Dokument.pdf").rename(self.place.root / "restricted.pdf")
        done = tool("qpdf", "--encrypt", "", "owner", "256", "--modify=none", "--", "--replace-input", path)
        self.assertEqual(done[0], 0)
        return path

    def test_names_and_folders(self):
        target = self.place.root / "Ziel ß"
        affixes = {"InsertBeforeBaseName": ("string", "vor "), "InsertAfterBaseName": ("string", " nach")}
        rows = [
            # output settings, alternative output folder, files there before, expected result
            ({"FileVariation": ("integer", 2), **folder(target)}, False, [], target / "ein Dokument.pdf"),
            ({**folder(target)}, False, ["ein Dokument.pdf"], target / "ein Dokument (1).pdf"),
            ({**folder(target), "DontOverwrite": ("boolean", "false")}, False, ["ein Dokument.pdf"],
             target / "ein Dokument.pdf"),
            ({**folder(target), **affixes}, False, [], target / "ein Dokument.pdf"),
            ({**folder(target), **affixes, "AddToBaseName": ("boolean", "true")}, False, [],
             target / "vor ein Dokument nach.pdf"),
            ({**folder(target)}, True, [], self.place.output / "ein Dokument.pdf"),
            ({"FileVariation": ("integer", 1)}, True, [], self.place.output / "ein Dokument.pdf"),
            ({"FileVariation": ("integer", 0)}, True, [], self.place.input / "ein Dokument (1).pdf"),
            ({"FileVariation": ("integer", 0), "DontOverwrite": ("boolean", "false")}, False, [],
             self.place.input / "ein Dokument.pdf"),
        ]
        target.mkdir()
        for settings, alternative, before, expected in rows:
            with self.subTest(settings=settings, alternative=alternative, before=before):
                for name in before:
                    (target / name).write_bytes(b"older")
                outcome = self.run_rules(settings, alternative)
                self.assertEqual(outcome.code, 0, outcome)
                self.assertEqual(page_count(expected, "open sesame"), 1, outcome)
                self.assertIsNone(page_count(expected), "the result is not protected")
                source = self.place.input / "ein Dokument.pdf"
                for path, content in [(source, self.document)] + [(target / name, b"older") for name in before]:
                    self.assertTrue(path == expected or path.read_bytes() == content, path)
                expected.unlink()
                self.place.clear(target)
                source.write_bytes(self.document)

    def test_what_cannot_be_saved_keeps_its_input(self):
        affixed = {**folder(self.place.output), "AddToBaseName": ("boolean", "true")}
        rows = [({"FileVariation": ("integer", 1)}, None),  # nobody answers
                (folder(self.place.root / "nowhere"), None)]
        rows += [({**affixed, key: ("string", affix)}, affix) for affix in ("../", "/tmp/x", "x/")
                 for key in ("InsertBeforeBaseName", "InsertAfterBaseName")]
        for settings, affix in rows:
            with self.subTest(settings=settings):
                outcome = self.run_rules(settings, final=3)
                self.assertEqual(outcome.code, 3, outcome)
                self.assertTrue(affix or outcome.has("Document did not save correctly"), outcome)
                named = outcome.values("ERROR: The text cannot be part of an output file name")
                self.assertEqual(named, [affix] if affix else [])
                self.assertEqual(list(self.place.output.iterdir()), [])
                self.assertEqual((self.place.input / "ein Dokument.pdf").read_bytes(), self.document)

    def test_two_runs_into_one_folder_take_different_names(self):
        places = [self.place, Workplace()]
        self.addCleanup(places[1].close)
        plain, restricted = self.document, self.restricted().read_bytes()
        to_folder = {"FileVariation": ("integer", 2), **folder(self.place.output)}
        rows = [
            # what saves, the documents, exit code
            (lambda place: host_sequence(place, to_folder, commands=[(PROTECT, protect_items())]), plain, 0),
            (lambda place: host_sequence(place, to_folder), restricted, 3),
            (lambda place: place.sequence("steps.sequ", [(PROTECT, protect_items()), (SAVE, save_items())]), plain, 0),
        ]
        for sequence, document, code in rows:
            for place in places:
                for number in range(25):
                    (place.input / f"{number}.pdf").write_bytes(document)
            output = {"FERRULEALTOUTPUTPATH": self.place.output}
            with ThreadPoolExecutor(2) as both:
                outcomes = list(both.map(lambda place: place.run_folder(sequence(place), **output), places))
            self.assertEqual([outcome.code for outcome in outcomes], [code, code], "\n".join(map(str, outcomes)))
            self.assertEqual(len(self.place.names(self.place.output)), 50)
            self.place.clear(self.place.output)

    def test_saving_through_a_converter_keeps_the_base_name_or_says_why_not(self):
        text, plain = self.place.output / "ein Dokument.txt", "com.adobe.acrobat.plain-text"
        rows = [(plain, False, "Completed", ""), (plain, True, "Failed", "failed: cannot write: Is a directory"),
                ("com.example.nothing", False, "Failed", "nothing failed: there is no such converter")]
        for converter, in_the_way, status, reason in rows:
            with self.subTest(converter=converter, in_the_way=in_the_way):
                if in_the_way:
                    text.mkdir()
                settings = {**folder(self.place.output), "HandlerUniqueID": ("string", converter)}
                outcome = self.place.run_folder(host_sequence(self.place, settings), output=False)
                self.assertEqual(outcome.values("Conversion status"), [status], outcome)
                self.assertIn(reason, outcome.errors)
                self.assertEqual(self.place.names(self.place.output), [text.name] if in_the_way or not reason else [])
                if not reason:
                    self.assertIn("Rules 1", text.read_text(encoding="utf-8"))
                    text.unlink()
                elif in_the_way:
                    text.rmdir()

    def test_a_document_whose_security_forbids_changes_is_copied_unchanged(self):
        before = self.restricted().rename(self.place.input / "restricted.pdf").read_bytes()
        outcome = self.run_rules(folder(self.place.output))
        self.assertEqual((outcome.code, list(self.place.output.iterdir())), (3, []), "it is not protected anew")
        outcome = self.place.run_folder(host_sequence(self.place, folder(self.place.output)), output=False)
        self.assertEqual((self.place.output / "restricted.pdf").read_bytes(), before, outcome)
        self.assertTrue(outcome.has("Security permissions do not allow document modification"), outcome)
        self.assertTrue(outcome.has("File has been copied to the output location"), outcome)
        self.assertEqual(outcome.values("Saving output file:"), [str(self.place.output / "restricted.pdf")], outcome)
        self.assertEqual(len(outcome.values("File Saving Error:")), 1, outcome)
        self.assertEqual(outcome.code, 3, outcome)
        # With the owner's password the same document is secured anew.
        (self.place.output / "restricted.pdf").unlink()
        passwords = self.place.root / "passwords.txt"
        passwords.write_text("wrong\nowner\n", encoding="utf-8")
        outcome = self.run_rules(folder(self.place.output), arguments=["--password-file", passwords])
        self.assertEqual(outcome.code, 0, outcome)
        self.assertEqual(page_count(self.place.output / "restricted.pdf", "open sesame"), 1)

    def test_converted_inputs(self):
        (self.place.input / "ein Dokument.pdf").unlink()
        picture = self.place.input / "Bild 1.JPG"
        picture.write_bytes(JPEG)
        for name, sequence, result in (
                ("engine", host_sequence(self.place, {"FileVariation": ("integer", 0)}), self.place.input / "Bild 1.pdf"),
                ("save step", self.place.sequence("x.sequ", [(SAVE, save_items())]), self.place.output / "Bild 1.pdf")):
            with self.subTest(name):
                outcome = self.place.run_folder(sequence, output=name == "save step")
                self.assertEqual(outcome.code, 0, outcome)
                self.assertEqual(page_count(result), 1, outcome)
                self.assertEqual(picture.read_bytes(), JPEG, "the input was written to")
                _, listing = tool("pdfimages", "-list", result)
                self.assertIn(b"jpeg", listing, "the picture was recompressed")
                result.unlink()

    def test_the_lookup_table_knows_inputs_by_either_name_and_a_password_that_cannot_be_had_costs_the_file(self):
        def table(*texts):
            return {"UseFileMapping": ("boolean", "true"), "FileMapping:NumItems": ("integer", len(texts)),
                    **{f"FileMapping:{number}": ("string", text) for number, text in enumerate(texts)}}

        (self.place.input / "ein Dokument.pdf").unlink()
        source, result = self.place.input / "Bild 1.JPG", self.place.output / "Bild 1.pdf"
        source.write_bytes(JPEG)
        rows = [(table("bild 1.jpg", "mapped"), "mapped"), (table("a", "b", "Bild 1.pdf", "mapped"), "mapped"),
                (table("Bild 2.pdf", "mapped"), "open sesame"), (table("Bild 1.pdf", ""), None),
                (table("Bild 1.pdf"), None), ({"UseDataSourceForOpenPassword": ("boolean", "true")}, None)]
        for items, password in rows:
            with self.subTest(items=items):
                commands = [(PROTECT, {**protect_items(), **items})]
                sequence = host_sequence(self.place, folder(self.place.output), commands=commands)
                outcome = self.place.run_folder(sequence, 0 if password else 3)
                self.assertEqual((source.read_bytes(), result.exists()), (JPEG, bool(password)))
                self.assertEqual(outcome.code, 0 if password else 3, outcome)
                if password:
                    self.assertEqual(page_count(result, password), 1, outcome)
                    result.unlink()
                else:
                    self.assertRegex(outcome.errors, "failed: (Passwords cannot be taken|The lookup table lists)")

    def test_passwords_from_the_text_of_pages(self):
        def page(*lines):
            return ("/MediaBox[0 0 300 200]", "".join(f"BT /F 12 Tf 20 {150 - 20 * n} Td ({line}) Tj ET " for n, line in enumerate(lines)))

        for path in self.place.input.iterdir():
            path.unlink()
        for name, pages in (("found.pdf", [page("Dear Mr Jones"), page("Customer No 4711"), page("Customer No 4712")]),
                            ("area.pdf", [page("  Two   words ", "Customer: none")]),
                            ("listed.pdf", [page("Customer No 4713")]), ("none.pdf", [page("Dear Mr Jones")])):
            (self.place.input / name).write_bytes(pdf_of_pages(pages))
        wants = {"SearchForPassword": ("boolean", "true"), "SearchRegex": ("string", r"Customer No (\d+)"),
                 "SearchRegexFormat": ("string", r"K\1"), "UseFileMapping": ("boolean", "true"),
                 "FileMapping:NumItems": ("integer", 2), "FileMapping:0": ("string", "listed.pdf"), "FileMapping:1": ("string", "mapped"),
                 "ExtractPasswordFromPage": ("boolean", "true"), "ExtractionArea:Left": ("double", 0),
                 "ExtractionArea:Right": ("double", "300"), "ExtractionArea:Top": ("double", "200"), "ExtractionArea:Bottom": ("double", "145")}
        commands = [(PROTECT, {**protect_items(password="not this", PasswordProtect=False), **wants})]
        outcome = self.place.run_folder(host_sequence(self.place, folder(self.place.output), commands=commands), 0)
        self.assertEqual(outcome.code, 0, outcome)
        for name, password in (("found", "K4711"), ("area", "Two words"), ("listed", "mapped"), ("none", "Dear Mr Jones")):
            path = self.place.output / f"{name}.pdf"
            self.assertIsNone(page_count(path))
            self.assertIsNotNone(page_count(path, password), name)
            path.unlink()
        self.assertNotRegex(str(outcome), "K4711|Two words")

        del wants["ExtractPasswordFromPage"]
        commands = [(PROTECT, {**protect_items(password="not this"), **wants})]
        outcome = self.place.run_folder(host_sequence(self.place, folder(self.place.output), commands=commands), 3)
        self.assertEqual(outcome.code, 3, outcome)
        self.assertEqual(sorted(path.name for path in self.place.output.iterdir()), ["found.pdf", "listed.pdf"], outcome)
        self.assertIn("No password was found in the text of the pages.", outcome.errors)

    def test_input_kinds(self):
        one, two = self.place.input / "ein Dokument.pdf", self.place.input / "zwei.pdf"
        two.write_bytes(self.document)
        missing = [("integer", "Input:FileVariation", 0)]
        files = missing + [(kind, f"Input:PreselectedFilesPaths:{n}:{key}", value) for n, path in enumerate((one, two))
                           for kind, key, value in (("atom", "FS", "DOS"), ("string", "DI", str(path)))]
        pre = [("integer", "Input:FileVariation", 1), ("string", "Input:PreselectedFolderPath:DIPath", str(self.place.input))]
        rows = [
            (files, {}, 0, 2, None),
            (missing, {}, 1, 0, "No pre-selected file paths available"),
            (pre, {}, 0, 2, None),
            ([("integer", "Input:FileVariation", 1)], {}, 1, 0, "No pre-selected folder/file paths available"),
            ([("integer", "Input:FileVariation", 1), ("cab", "Input:PreselectedFolderPath", "")], {}, 1, 0,
             "Missing DI in pre-selected folder path"),
            ([("integer", "Input:FileVariation", 2)], {}, 1, 0, "Prompting user for the input document."),
            ([("integer", "Input:FileVariation", 5)], {}, 1, 0, "ERROR: Unknown input option"),
            ([("integer", "Input:FileVariation", 5)], {"FERRULEALTPATH": str(self.place.input)}, 0, 2, None),
            ([("integer", "Input:FileVariation", 5)], {"FERRULEALTPATH": f' "{two}" '}, 0, 1, None),
        ]
        for inputs, variables, code, count, text in rows:
            with self.subTest(inputs=inputs, variables=variables):
                sequence = host_sequence(self.place, folder(self.place.output), inputs)
                outcome = self.place.run({"FERRULESEQU": sequence, "FERRULENOPROGRESS": "yes", **variables})
                self.assertEqual(outcome.code, code, outcome)
                self.assertEqual(len(list(self.place.output.iterdir())), count, outcome)
                if text:
                    self.assertTrue(outcome.has(text), outcome)
                self.place.clear(self.place.output)

    def test_extensions_subfolders_and_order(self):
        for name in ("b.pdf", "A.PDF", "c.txt", ".hidden.pdf", "sub/d.pdf", ".hid/e.pdf", "sub/deep/f.pdf"):
            path = self.place.input / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(self.document)
        os.symlink(self.place.input, self.place.input / "sub" / "loop")
        everything = ["A.PDF", "b.pdf", "ein Dokument.pdf", "sub/d.pdf", "sub/deep/f.pdf"]
        rows = [({}, everything), ({"FERRULENOSUBFOLDERS": "YES"}, everything[:3]),
                ({"FERRULEFILEEXT": "txt; pdf"}, ["c.txt"] + everything), ({"FERRULEFILEEXT": "doc"}, [])]
        for variables, expected in rows:
            with self.subTest(variables):
                outcome = self.run_rules({"FileVariation": ("integer", 3)}, True, **variables)  # which saves nothing
                self.assertEqual(self.place.names(self.place.output), [], outcome)
                for text in ("Saving output file:", "Document has been saved successfully"):
                    self.assertFalse(outcome.has(text), outcome)
                found = [path[len(str(self.place.input)) + 1:] for path in outcome.values("Opening input document")]
                self.assertEqual([path for path in found if "/loop/" not in path], expected, outcome)
                self.assertEqual(len(found), len(set(found)), "a file was taken twice")

    def test_linearised_when_asked_for_and_text_kept(self):
        for optimise, expected in (("true", 0), ("false", 2)):
            with self.subTest(optimise):
                settings = {**folder(self.place.output), "OptimizePDF": ("boolean", optimise)}
                outcome = self.place.run_folder(host_sequence(self.place, settings), output=False)
                result = self.place.output / "ein Dokument.pdf"
                code, out = tool("qpdf", "--check-linearization", result)
                self.assertEqual(b"not linearized" in out, optimise == "false", out)
                self.assertEqual(text_of(result), text_of(self.place.input / "ein Dokument.pdf"), outcome)
                result.unlink()


class FinalActions(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("protect.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])

    def test_each_action_does_and_tells_what_its_code_says(self):
        folder, missing = self.place.input / "sub folder ü", "/not/there"
        done = self.place.root / "done with blanks and ö"
        for path in (folder, done):
            path.mkdir()
        source = folder / NAME
        rows = [
            # code, destination, names taken there, log entry, whether the input stays, what arrives, why it failed
            (0, done, [], None, True, None, None),
            (1, done, [NAME], COPIED, True, done / NAME, None),
            (2, done, [], MOVED, False, done / NAME, None),
            (2, done, [NAME], NOT_MOVED, True, None, "The name is taken: "),
            (2, missing, [], NOT_MOVED, True, None, NO_FOLDER),
            (3, "", [], "File is deleted", False, None, None),
            (4, "renamed.pdf", [], "File is renamed to", False, folder / "renamed.pdf", None),
            (4, "", [], "Can't rename file to", True, None, ""),
            (5, missing, [], "The program of the final action cannot be found", True, None, NO_PROGRAM),
            (5, self.sequence, [], "An error occured while trying to execute file", True, None, NO_PROGRAM),
            (6, done, [NAME], MOVED, False, done / NAME, None),
            (7, done, [NAME, FIRST], MOVED, False, done / SECOND, None),
            (7, missing, [], "Missing output folder", True, None, NO_FOLDER),
            (8, done, [NAME], COPIED, True, done / FIRST, None),
            (8, missing, [], "Can't copy file to", True, None, NO_FOLDER),
            (-1, done, [], None, True, None, None),
        ]
        for code, destination, taken, entry, stays, arrives, reason in rows:
            with self.subTest(code=code, destination=destination, taken=taken):
                source.write_bytes(INPUT)
                for name in taken:
                    (done / name).write_bytes(OTHER)
                outcome = self.place.run_folder(self.sequence, code, destination)
                self.assertEqual(outcome.code, 0 if reason is None else 3, outcome)
                self.assertEqual(source.read_bytes() if stays else source.exists(), INPUT if stays else False, outcome)
                self.assertEqual(len(outcome.values(entry)) if entry else 0, 1 if entry else 0, outcome)
                self.assertTrue(not reason or f"{NAME}: {reason}" in outcome.errors, outcome)
                if arrives:
                    self.assertEqual(arrives.read_bytes(), INPUT, outcome)
                for path in (done / name for name in taken):
                    self.assertTrue(path == arrives or path.read_bytes() == OTHER, "an older file was touched")
                self.place.clear(done, folder, self.place.output)

    def test_a_failed_document_keeps_its_input_whatever_the_action(self):
        broken = self.place.input / "broken.pdf"
        broken.write_bytes(b"this is no document")
        for code in (1, 2, 3, 4, 6, 7, 8):
            with self.subTest(code=code):
                outcome = self.place.run_folder(self.sequence, code, "x.pdf" if code == 4 else self.place.done)
                self.assertEqual((broken.read_bytes(), self.place.names(self.place.done)), (b"this is no document", []))
                self.assertTrue(outcome.has("Can't open input document"), outcome)
                self.assertEqual(outcome.code, 3)


if __name__ == "__main__":
    unittest.main()
