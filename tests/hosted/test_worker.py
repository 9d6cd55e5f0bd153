"""What the host itself adds to a run: records, the watch over signatures, and what happens when the supervisor is gone."""
import json
import os
import subprocess
import unittest

from unattended import HOST, PROTECT, SAVE, Workplace, minimal_pdf, protect_items, save_items
from worker import Job, job_of

SIGNED = (b"/AcroForm<</SigFlags 3/Fields[<</FT/Sig/T(s)/V<</Type/Sig/Filter/Adobe.PPKLite/SubFilter/adbe.pkcs7.detached"
          b"/ByteRange[0 1 2 3]/Contents<00>>>>>]>>/Pages 2 0 R")


class WorkerTest(unittest.TestCase):
    def setUp(self):
        self.place = Workplace()
        self.addCleanup(self.place.close)
        self.sequence = self.place.sequence("save.sequ", [(SAVE, save_items())])

    def write(self, name, content=None):
        path = self.place.input / name
        path.write_bytes(minimal_pdf(name) if content is None else content)
        return path

    def job(self, inputs, sequence=None, final=0, destination="", **more):
        return Job(self.place, job_of("run", sequence or self.sequence, final, destination, self.place.input,
                                      self.place.output, **more), map(str, inputs))

    def clear(self):
        for path in [*self.place.output.iterdir(), *self.place.done.iterdir()]:
            path.unlink()

    def test_a_signed_document_that_is_written_as_a_whole_is_told(self):
        signed = self.write("signed.pdf", minimal_pdf("x").replace(b"/Pages 2 0 R", SIGNED, 1))
        plain = self.write("plain.pdf")
        sequence = self.place.sequence("no-save.sequ", [(PROTECT, protect_items())])
        job = self.job([signed, plain])
        self.assertEqual([record.get("signatures") for record in job.records], ["broken", None], job)
        self.assertTrue(any("signed.pdf" in remark and "signatures broken" in remark for remark in job.remarks), job)
        self.clear()
        self.assertEqual(self.job([signed], dryRun=True).records[0].get("signatures"), "broken", "foretold, too")
        self.assertNotIn("signatures", self.job([signed], sequence).records[0], "nothing was written")

    def test_without_a_supervisor_nothing_more_is_done(self):
        path = self.write("a.pdf")
        job = job_of("run", self.sequence, 3, "", self.place.input, self.place.output)
        answers = [{"job": job}, {"input": {"number": 1, "total": 9, "path": str(path), "toDo": "whole"}}, {}, {}]
        for count in range(len(answers) + 1):
            with self.subTest(answers=count):
                done = subprocess.run([str(HOST), "--worker"], timeout=60, check=False, capture_output=True,
                                      input=b"".join(json.dumps(answer).encode() + b"\n" for answer in answers[:count]),
                                      env=dict(os.environ, XDG_CONFIG_HOME=str(self.place.root / "config")))
                self.assertEqual(done.returncode, 1, done)
                self.assertTrue(path.exists())
                self.assertEqual(list(self.place.output.iterdir()), [])

    def test_a_record_that_cannot_be_written_is_no_good_run(self):
        self.write("a.pdf")
        outcome = self.place.run_folder(self.sequence, arguments=("--record", "/dev/full"))
        self.assertEqual(outcome.code, 1, outcome)
        self.assertIn("the record /dev/full cannot be written", outcome.errors)
        outcome = self.place.run_folder(self.sequence, arguments=("--record", self.place.root / "no" / "such"))
        self.assertEqual(outcome.code, 1, outcome)
        self.assertEqual(outcome.lines, [], "the run did not even start")


if __name__ == "__main__":
    unittest.main()
