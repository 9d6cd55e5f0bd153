/* The optional table of the open host through which a plug-in tells how a run over many files goes.
 *
 * Other hosts do not have this table, and a plug-in must not miss it. Slots are never renumbered; new ones go at the end.
 * Nothing here raises. Texts are borrowed for the call. Thread: user interface. */
#ifndef FERRULE_HOSTAPI_JOBS_TABLE_H
#define FERRULE_HOSTAPI_JOBS_TABLE_H

#include "HostTypes.h"

#define HOST_TABLE_JOBS "FerruleJobs"
enum { kTableJobsVersion = 0x00010000, kTableJobsSelectors = 3 };

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

#endif
