/* The optional table of the open host through which a plug-in uses a full-text index beyond what the table "Catalog" offers.
 *
 * Other hosts do not have this table, and a plug-in must not miss it. Slots are never renumbered; new ones go at the end.
 * Nothing here raises. Texts are borrowed for the call and are UTF-8; paths in JSON are texts that stand for bytes. Thread: user
 * interface. */
#ifndef FERRULE_HOSTAPI_INDEX_TABLE_H
#define FERRULE_HOSTAPI_INDEX_TABLE_H

#include "HostTypes.h"

#define HOST_TABLE_INDEX "FerruleIndex"
enum { kTableIndexVersion = 0x00010000, kTableIndexSelectors = 1 };

/* Called for each report, a JSON object. The text is valid during the call. */
typedef void(HOSTCALL *IndexReportProc)(const char *json, void *clientData);

/* Does what the order, a JSON object, says with the index whose description file is "path". Answers as the slots of the
 * table "Catalog" do: loaded 4, built 2, purged 3; not done: invalid 0, could not be saved 1, busy 5. What is wrong stands in a
 * report {"problem": sentence}. By "do":
 *
 * "create"  writes the description: "folders" (paths), "includeEncrypted". No reports.
 * "build"   "jobs", "timeout" (seconds for each document), "memory" (bytes for each reader, decimal text); 0: no limit.
 *           Reports {"progress": {"done", "total"}} and last {"summary": {"documents", "pages", "read", "unchanged", "removed"}};
 *           before that {"document": {"path", "state", "message"}} for each document that is not, or not whole, in the index.
 * "purge"   No reports.
 * "status"  Reports {"document"} as above, and {"contents": {"built", "documents", "pages", "bytes", "builtAt"}}.
 * "search"  "query", "onOnePage", "snippets", "most" (0: all). Reports {"hit": {"path", "page", "text"}}, in the order of paths
 *           and pages. */
typedef ASInt32(HOSTCALL *IndexCarryOutSlotProc)(const char *order, IndexReportProc report, void *clientData);
enum { kSlotIndexCarryOut = 1 };

#endif
