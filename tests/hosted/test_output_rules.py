"""Where results go and under which name, through sequences in the host's own form, which can say all of it."""
import os
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from unattended import PROTECT, SAVE, Workplace, minimal_pdf, page_count, protect_items, save_items, text_of, tool

# Eight by eight grey pixels: one quantisation table, two coding tables with one code each, one block.
JPEG = bytes.fromhex("ffd8" "ffe000104a46494600010101004800480000" "ffdb004300" + "01" * 64 + "ffc0000b080008000801011100"
                     "ffc4001400" "01" + "00" * 15 + "00" "ffc4001410" "01" + "00" * 15 + "00"
                     "ffda0008010100003f00" "3f" "ffd9")


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

    def test_names_and_folders(self):
        target = self.place.root / "Ziel ß"
        affixes = {"InsertBeforeBaseName": ("string", "vor "), "InsertAfterBaseName": ("string", " nach")}
        rows = [
            # output settings, alternative output folder, files there before, expected result
            ({"FileVariation": ("integer", 2), **folder(target)}, False, [], target / "ein Dokument.pdf"),
            ({**folder(target)}, False, [], target / "ein Dokument.pdf"),
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
        for settings, alternative, before, expected in rows:
            with self.subTest(settings=settings, alternative=alternative, before=before):
                target.mkdir(exist_ok=True)
                for name in before:
                    (target / name).write_bytes(b"older")
                outcome = self.run_rules(settings, alternative)
                self.assertEqual(outcome.code, 0, outcome)
                self.assertEqual(page_count(expected, "open sesame"), 1, outcome)
                self.assertIsNone(page_count(expected), "the result is not protected")
                source = self.place.input / "ein Dokument.pdf"
                if expected != source:
                    self.assertEqual(source.read_bytes(), self.document)
                for name in before:
                    if target / name != expected:
                        self.assertEqual((target / name).read_bytes(), b"older")
                expected.unlink()
                for path in target.iterdir():
                    path.unlink()
                source.write_bytes(self.document)

    def test_kind_3_saves_nothing_and_says_nothing(self):
        outcome = self.run_rules({"FileVariation": ("integer", 3)}, True)
        self.assertEqual(outcome.code, 0, outcome)
        self.assertEqual(list(self.place.output.iterdir()), [])
        self.assertFalse(outcome.has("Saving output file:"), outcome)
        self.assertFalse(outcome.has("Document has been saved successfully"), outcome)

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
                self.assertEqual(outcome.values("ERROR: The text cannot be part of an output file name"), [affix] if affix else [])
                self.assertEqual(list(self.place.output.iterdir()), [])
                self.assertEqual((self.place.input / "ein Dokument.pdf").read_bytes(), self.document)

    def test_saving_through_a_converter_keeps_the_documents_base_name(self):
        settings = {**folder(self.place.output), "HandlerUniqueID": ("string", "com.adobe.acrobat.plain-text")}
        outcome = self.place.run_folder(host_sequence(self.place, settings), output=False)
        self.assertEqual(outcome.code, 0, outcome)
        self.assertEqual(outcome.values("Conversion status"), ["Completed"], outcome)
        self.assertIn("Rules 1", (self.place.output / "ein Dokument.txt").read_text(encoding="utf-8"))

    def test_an_output_folder_whose_name_is_no_text(self):
        output = Path(os.fsdecode(os.fsencode(self.place.root) + b"/B\xfcro"))
        output.mkdir()
        sequence = self.place.sequence("p.sequ", [(PROTECT, protect_items()), (SAVE, save_items())])
        outcome = self.place.run({"FERRULESEQU": sequence, "FERRULEALTPATH": self.place.input,
                                  "FERRULEALTOUTPUTPATH": output, "FERRULENOPROGRESS": "yes"})
        self.assertEqual(outcome.code, 0, outcome)
        self.assertEqual(page_count(output / "ein Dokument.pdf", "open sesame"), 1)

    def test_two_runs_into_one_folder_take_different_names(self):
        places = [self.place, Workplace()]
        self.addCleanup(places[1].close)
        restricted = self.place.root / "restricted.pdf"
        (self.place.input / "ein Dokument.pdf").unlink()
        plain = self.place.root / "plain.pdf"
        plain.write_bytes(self.document)
        tool("qpdf", "--encrypt", "", "owner", "256", "--modify=none", "--", str(plain), str(restricted))
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
                    (place.input / f"{number}.pdf").write_bytes(document.read_bytes())
            with ThreadPoolExecutor(2) as both:
                outcomes = list(both.map(lambda place: place.run_folder(sequence(place), FERRULEALTOUTPUTPATH=self.place.output), places))
            self.assertEqual([outcome.code for outcome in outcomes], [code, code], "\n".join(map(str, outcomes)))
            results = list(self.place.output.iterdir())
            self.assertEqual(len(results), 50)
            for result in results:
                result.unlink()

    def test_a_conversion_that_fails_says_why(self):
        in_the_way = self.place.output / "ein Dokument.txt"
        in_the_way.mkdir()
        for converter, reason in (("com.example.nothing", "nothing failed: there is no such converter"), ("com.adobe.acrobat.plain-text", "plain-text failed: cannot write: Is a directory")):
            settings = {**folder(self.place.output), "HandlerUniqueID": ("string", converter)}
            outcome = self.place.run_folder(host_sequence(self.place, settings), output=False)
            self.assertEqual(outcome.values("Conversion status"), ["Failed"], outcome)
            self.assertRegex(outcome.errors, reason)
            self.assertEqual(list(self.place.output.iterdir()), [in_the_way])

    def test_a_document_whose_security_forbids_changes_is_copied_unchanged(self):
        source = self.place.input / "restricted.pdf"
        (self.place.input / "ein Dokument.pdf").unlink()
        plain = self.place.root / "plain.pdf"
        plain.write_bytes(self.document)
        code, _ = tool("qpdf", "--encrypt", "", "owner", "256", "--modify=none", "--print=none", "--", plain, source)
        self.assertEqual(code, 0)
        before = source.read_bytes()
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

    def test_the_lookup_table_knows_converted_inputs_by_either_name(self):
        (self.place.input / "ein Dokument.pdf").unlink()
        (self.place.input / "Bild 1.JPG").write_bytes(JPEG)
        for listed, password in (("bild 1.jpg", "mapped"), ("Bild 1.pdf", "mapped"), ("Bild 2.pdf", "open sesame")):
            with self.subTest(listed=listed):
                mapping = {"UseFileMapping": ("boolean", "true"), "FileMapping:NumItems": ("integer", 2),
                           "FileMapping:0": ("string", listed), "FileMapping:1": ("string", "mapped")}
                sequence = host_sequence(self.place, folder(self.place.output),
                                         commands=[(PROTECT, {**protect_items(), **mapping})])
                outcome = self.place.run_folder(sequence)
                self.assertEqual(outcome.code, 0, outcome)
                self.assertEqual(page_count(self.place.output / "Bild 1.pdf", password), 1, outcome)
                (self.place.output / "Bild 1.pdf").unlink()

    def test_a_password_that_cannot_be_had_costs_the_file(self):
        def table(*texts, count=None):
            return {"UseFileMapping": ("boolean", "true"), "FileMapping:NumItems": ("integer", count or len(texts)),
                    **{f"FileMapping:{number}": ("string", text) for number, text in enumerate(texts)}}

        name = "EIN Dokument.pdf"
        rows = [({"SearchForPassword": ("boolean", "true")}, None), (table(name, ""), None), (table(name), None),
                (table(name, "mapped", count=1), "mapped"), (table("a", "b", name, "mapped"), "mapped")]
        for items, password in rows:
            with self.subTest(items=items):
                sequence = host_sequence(self.place, folder(self.place.output),
                                         commands=[(PROTECT, {**protect_items(), **items})])
                outcome = self.place.run_folder(sequence, 3 if password is None else 0)
                source, result = self.place.input / "ein Dokument.pdf", self.place.output / "ein Dokument.pdf"
                self.assertEqual(source.read_bytes(), self.document)
                self.assertEqual(outcome.code, 0 if password else 3, outcome)
                self.assertEqual(result.exists(), password is not None, outcome)
                if password:
                    self.assertEqual(page_count(result, password), 1, outcome)
                    result.unlink()
                else:
                    self.assertRegex(outcome.errors, "failed: (Passwords cannot be taken|The lookup table lists)")

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
                for path in self.place.output.iterdir():
                    path.unlink()

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
                outcome = self.run_rules({"FileVariation": ("integer", 3)}, **variables)
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


if __name__ == "__main__":
    unittest.main()
