"""Checks that the generated manual page and completions are understood by those who read them.

usage: generated_files_test.py FERRULE FERRULE-HOST [-v]
"""
import shutil
import subprocess
import sys
import unittest

PROGRAM, HOST = sys.argv.pop(1), sys.argv.pop(1)


def generated(what):
    return subprocess.run([PROGRAM, "generate", what], capture_output=True, text=True, check=True).stdout


class GeneratedFiles(unittest.TestCase):
    def need(self, program):
        if not shutil.which(program):
            self.skipTest(f"{program} is not here")

    def test_manual_pages_have_no_warnings_and_keep_hyphens_and_dots(self):
        self.need("groff")
        host = subprocess.run([HOST, "--manual-page"], capture_output=True, text=True, check=True).stdout
        rows = [(generated("man"), ("--final-action NAME", "ferrule run protect.sequ --input in --output out",
                                    "select(.outcome!=\"saved\").path")),
                (host, ("--password-file FILE", "--plugin ./Ferrule.api", "--host-version N\n", "-h, --help"))]
        for page, texts in rows:
            shown = subprocess.run(["groff", "-man", "-Tascii", "-P-cbou", "-ww"], input=page, capture_output=True, text=True, check=True)
            self.assertEqual(shown.stderr, "")
            for text in texts:
                self.assertIn("".join(text.split()), "".join(shown.stdout.split()))
        told = subprocess.run([HOST, "--plgin", "x"], capture_output=True, text=True, check=False)
        self.assertEqual(told.returncode, 2)
        self.assertIn('did you mean "--plugin"?', told.stderr)

    def complete(self, *words):
        """What bash offers when the last word is being typed."""
        script = generated("bash") + """
compopt() { :; }
COMP_WORDS=("$@"); COMP_CWORD=$(( $# - 1 )); _ferrule; printf '%s\\n' "${COMPREPLY[@]}"
"""
        done = subprocess.run(["bash", "-c", script, "bash", *words], capture_output=True, text=True, check=True, cwd="/")
        self.assertEqual(done.stderr, "")
        return done.stdout.split()

    def test_bash_offers_commands_options_and_values(self):
        rows = [
            (["ferrule", ""], "sequence", "generate"),
            (["ferrule", "se"], "sequence", "run"),
            (["ferrule", "sequence", "c"], "convert", "show"),
            (["ferrule", "run", "--ret"], "--retry-failed", "--resume"),
            (["ferrule", "run", "--ho"], None, "--host"),
            (["ferrule", "run", "--final-action", "move-"], "move-versions", "delete"),
            (["ferrule", "sequence", "new", "--method", ""], "aes128", "xml"),
            (["ferrule", "sequence", "convert", "--to", ""], "host", "aes128"),
            (["ferrule", "run", "--output", "et"], "etc", "--output"),
            (["ferrule", "run", "et"], "etc", "--ext"),
            (["ferrule", "run", "--jobs", ""], None, "etc"),
        ]
        for words, offered, kept_back in rows:
            with self.subTest(words=words):
                found = self.complete(*words)
                self.assertNotIn(kept_back, found)
                if offered:
                    self.assertIn(offered, found)

    def test_zsh_and_fish_understand_their_files(self):
        for program, check in (("zsh", "-n"), ("fish", "--no-execute")):
            with self.subTest(program):
                self.need(program)
                subprocess.run([program, check], input=generated(program), text=True, check=True)


if __name__ == "__main__":
    unittest.main()
