/* The optional table of the open host through which a plug-in receives a job, asks before it acts for good, and tells how
 * a run over many files goes.
 *
 * Other hosts do not have this table, and a plug-in must not miss it. Slots are never renumbered; new ones go at the end.
 * Nothing here raises. Texts are borrowed for the call. Paths are in host encoding. Thread: user interface. */
#ifndef FERRULE_HOSTAPI_JOBS_TABLE_H
#define FERRULE_HOSTAPI_JOBS_TABLE_H

#include "HostTypes.h"

#define HOST_TABLE_JOBS "FerruleJobs"
/* The first version had the slots 1 to 3 only, the second those to 10, the third those to 11, the fourth those to 12,
 * the fifth those to 13, the sixth those to 14, the seventh those to 15, the eighth those to 18. */
enum {
    kTableJobsFirstVersion = 0x00010000,
    kTableJobsSecondVersion = 0x00010001,
    kTableJobsThirdVersion = 0x00010002,
    kTableJobsFourthVersion = 0x00010003,
    kTableJobsFifthVersion = 0x00010004,
    kTableJobsSixthVersion = 0x00010005,
    kTableJobsSeventhVersion = 0x00010006,
    kTableJobsEighthVersion = 0x00010007,
    kTableJobsVersion = 0x00010008,
    kTableJobsSelectors = 19
};

/* How one input file ended. Only "saved" means that everything asked for was done. */
enum {
    kJobFileSaved = 0,           /* all steps done and the result written (or nothing was to be written) */
    kJobFileCopiedUnchanged = 1, /* security forbade changes: the output is a copy of the input */
    kJobFileIncomplete = 2,      /* written, but a step was missing or failed, or the final action failed */
    kJobFileFailed = 3,          /* could not be opened, processed or saved; the input was left as it is */
    kJobFileSkipped = 4,         /* not processed at all, on purpose */
    kJobFileStopped = 5          /* the run was stopped while the file was being processed */
};

/* How the run as a whole ended. */
enum {
    kJobRunFinished = 0,  /* every input file was dealt with; single files may have failed */
    kJobRunNotStarted = 1, /* no sequence, no input: nothing was processed */
    kJobRunBroken = 2      /* ended before every input file was dealt with */
};

/* The plug-in is going to run: sent once, before anything else of the run.
 * inputs    number of input files, or -1 when it is not known yet */
typedef void(HOSTCALL *JobsRunStartsSlotProc)(ASInt32 inputs);
enum { kSlotJobsRunStarts = 1 };

/* One input file is done.
 * path      the input as the plug-in knows it, in host encoding
 * outcome   kJobFile...
 * message   one sentence for people, empty when there is nothing to say */
typedef void(HOSTCALL *JobsFileDoneSlotProc)(const char *path, ASInt32 outcome, const char *message);
enum { kSlotJobsFileDone = 2 };

/* The run is over: sent exactly once for each run that started, whatever its end.
 * end       kJobRun...
 * message   one sentence for people, empty when there is nothing to say */
typedef void(HOSTCALL *JobsRunEndsSlotProc)(ASInt32 end, const char *message);
enum { kSlotJobsRunEnds = 3 };

/* The job that this start of the host is for: one JSON object, UTF-8, with "kind" and what the kind needs.
 * Null when there is none: then the plug-in does what it does in any other host. The text is the host's and stays valid
 * until the host ends; every call answers the same. */
typedef const char *(HOSTCALL *JobsNextJobSlotProc)(void);
enum { kSlotJobsNextJob = 4 };

/* What is left to do for an input file. */
enum {
    kJobInputWhole = 0,       /* everything */
    kJobInputFinalAction = 1  /* its result is written already: only the final action */
};

typedef struct JobInput_t {
    ASUns32 size;    /* of this record, set by the plug-in */
    ASInt32 number;  /* of the file in the whole run, from 1 */
    ASInt32 total;   /* number of files of the whole run */
    ASInt32 toDo;    /* kJobInput... */
    const char *path; /* the host's; valid until the next call of this slot */
} JobInput;

/* The next input file of a job that gets its inputs from the host. 1: `input` is filled; 0: there is none left, or the
 * run is to end early, which is not an error. May wait until the host knows. */
typedef ASInt32(HOSTCALL *JobsNextInputSlotProc)(JobInput *input);
enum { kSlotJobsNextInput = 5 };

/* What is going to be done for good. */
enum {
    kJobActPut = 0,    /* the complete file `file` takes the place or the free name `target` */
    kJobActMove = 1,   /* `file` gets the name `target` */
    kJobActDelete = 2, /* `file` is removed; no target */
    kJobActStart = 3   /* the program `target` is started with `file` as its argument */
};
enum {
    kJobActRefused = 0,  /* do not; treat it as a failure of this file */
    kJobActAllowed = 1,  /* do it now; the intention is on record */
    kJobActPretended = 2 /* do not, but go on as if it had been done (a trial run) */
};

/* Asked immediately before each such act, never earlier: after it the host takes it that the act happens or fails. */
typedef ASInt32(HOSTCALL *JobsMayActSlotProc)(ASInt32 act, const char *file, const char *target);
enum { kSlotJobsMayAct = 6 };

enum {
    kJobPathAsOnDisk = 0, /* nothing was pretended about this path */
    kJobPathThere = 1,    /* a pretended act has created it */
    kJobPathGone = 2      /* a pretended act has removed it */
};

/* What pretended acts of this run have made of a path; always kJobPathAsOnDisk when the run is no trial. */
typedef ASInt32(HOSTCALL *JobsPathStateSlotProc)(const char *path);
enum { kSlotJobsPathState = 7 };

/* A result of a job that is no run over files, or a line of a plan: one JSON object, UTF-8. */
typedef void(HOSTCALL *JobsReportSlotProc)(const char *json);
enum { kSlotJobsReport = 8 };

/* Places in the plug-in's log. Those of the sequence's preflight enclose lines that belong to the whole run although they
 * stand among the lines of one file; the last one stands behind what a run logs before its first file. */
enum {
    kJobMarkSequencePreflightBegins = 0,
    kJobMarkSequencePreflightEnds = 1,
    kJobMarkInputsCounted = 2
};

/* Everything logged so far is written. Answers when the host has taken note of the place. */
typedef void(HOSTCALL *JobsLogMarkSlotProc)(ASInt32 mark);
enum { kSlotJobsLogMark = 9 };

/* The present input's results are written; what the plug-in asks for from now until the file is done is its final action. */
typedef void(HOSTCALL *JobsFinalActionBeginsSlotProc)(void);
enum { kSlotJobsFinalActionBegins = 10 };

/* What of a document did not come through its repair: one sentence, UTF-8, that ends with a full stop. Empty when nothing
 * is known to be lost: the document was sound, or only its cross-reference table was made anew and every page that it
 * claims to have is there. Null when `document` is none of the host's. The text is the host's and stays valid until the
 * next call of this slot.
 * document  open, as the host gave it; it keeps the answer of its opening, also after it was saved */
typedef const char *(HOSTCALL *JobsDocumentLossSlotProc)(PDDoc document);
enum { kSlotJobsDocumentLoss = 11 };

/* The next save of the document, and that one only, replaces no file: it fails with "exists" when the name is taken by then.
 * document  open, as the host gave it */
typedef void(HOSTCALL *JobsNextSaveIsNewSlotProc)(PDDoc document);
enum { kSlotJobsNextSaveIsNew = 12 };

/* What the work has found in the present input: one JSON array, UTF-8. It becomes part of what is told about the file. */
typedef void(HOSTCALL *JobsFileFoundSlotProc)(const char *json);
enum { kSlotJobsFileFound = 13 };

/* From 1 until 0, or until the file is done, what the plug-in asks for are copies that a step makes beside the results of
 * the present input. */
typedef void(HOSTCALL *JobsCopyingSlotProc)(ASInt32 begins);
enum { kSlotJobsCopying = 14 };

/* Whether saving the document anew would make signatures in it, a certification or usage rights worthless: not 0, or 0. -1
 * when `document` is none of the host's, or when nobody can tell. From the eighth version on it is 2 when also a change of
 * its properties that is appended to the file would do so.
 * document  open, as the host gave it */
typedef ASInt32(HOSTCALL *JobsDocumentSignedSlotProc)(PDDoc document);
enum { kSlotJobsDocumentSigned = 15 };

/* The next save of the document, and that one only, is appended to the bytes of its file, whatever its flags and its target
 * are: the written file is the old one with the changed properties behind it.
 * document  open, as the host gave it
 * only      not 0: where that is not possible the save fails; 0: the whole document is written then */
typedef void(HOSTCALL *JobsNextSaveAppendsSlotProc)(PDDoc document, ASInt32 only);
enum { kSlotJobsNextSaveAppends = 16 };

/* Why a change of the document's properties cannot be appended to its file: one clause, UTF-8, as "its file was repaired".
 * Empty when nothing is known to stand against it, which may show only in a save that fails; null when `document` is none of the host's, or when nobody can tell. The text is the
 * host's and stays valid until the next call of this slot.
 * document  open, as the host gave it */
typedef const char *(HOSTCALL *JobsAppendObstacleSlotProc)(PDDoc document);
enum { kSlotJobsAppendObstacle = 17 };

/* Why the document's last save wrote all of it: one clause, UTF-8; empty when it appended. Null when it was not saved yet or is
 * none of the host's. The text is the host's and stays valid until the document is saved again or closed.
 * document  open, as the host gave it */
typedef const char *(HOSTCALL *JobsWrittenWholeSlotProc)(PDDoc document);
enum { kSlotJobsWrittenWhole = 18 };

/* The next save of the document, and that one only, writes all of it, whatever its flags are, and fails when the new file still
 * holds a text that an information entry had when the document was opened and has no more: in the information, in a packet of
 * metadata, or anywhere else outside of what the document shows. A save that fails because the name is taken does not count.
 * document  open, as the host gave it */
typedef void(HOSTCALL *JobsNextSaveForgetsSlotProc)(PDDoc document);
enum { kSlotJobsNextSaveForgets = 19 };

#endif
