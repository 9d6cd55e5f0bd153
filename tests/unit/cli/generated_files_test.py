"""Checks that the generated manual page and completions are understood by those who read them.

usage: generated_files_test.py FERRULE [-v]
"""
import shutil
import subprocess
import sys
import unittest

PROGRAM = sys.argv.pop(1)


def generated(what):
    return subprocess.run([PROGRAM, "generate", what], capture_output=True, text=True, check=True).stdout


class GeneratedFiles(unittest.TestCase):
    def need(self, program):
        if not shutil.which(program):
            self.skipTest(f"{program} is not here")

    def test_manual_page_has_no_warnings_and_keeps_hyphens_and_dots(self):
        self.need("groff")
        shown = subprocess.run(["groff", "-man", "-Tascii", "-P-cbou", "-ww"], input=generated("man"), capture_output=True, text=True,
                               check=True)
        self.assertEqual(shown.stderr, "")
        for text in ("--final-action NAME", "ferrule run protect.sequ --input in --output out", "select(.outcome!=\"saved\").path"):
            self.assertIn(text.replace(" ", ""), "".join(shown.stdout.split()))

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

    def test_zsh_understands_its_file(self):
        self.need("zsh")
        subprocess.run(["zsh", "-n"], input=generated("zsh"), text=True, check=True)

    def test_fish_understands_its_file(self):
        self.need("fish")
        subprocess.run(["fish", "--no-execute"], input=generated("fish"), text=True, check=True)


if __name__ == "__main__":
    unittest.main()
