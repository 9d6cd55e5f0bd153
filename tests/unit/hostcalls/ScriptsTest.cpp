#include "hostcalls/Documents.h"
#include "hostcalls/Scripts.h"
#include "openhost/script/Slots.h"
#include "unit/hostcalls/HostedCalls.h"
#include "unit/openhost_pdf/TestPdfs.h"

using ScriptCalls = CHostedCalls;

TEST_F(ScriptCalls, AScriptAnswersOrFailsWithTheHostsReason)
{
    const CHostDocument document = CHostDocument::Open(m_folder.Write("a.pdf", SamplePdf(1)));
    EXPECT_EQ(RunScript(document.Get(), "1").Error(), "this host runs no scripts");
    openhost::OfferScriptSlots(openhost::Part<openhost::CTables>());
    HostTables().ImportOptional();
    EXPECT_EQ(RunScript(document.Get(), "event.value = '😀' + numPages; // ü").Value(), "😀1");
    EXPECT_EQ(RunScript(document.Get(), "").Value(), "");
    for (const char* const failing : {"event.rc = false", "\rthrow 1", "var"})
        EXPECT_FALSE(RunScript(document.Get(), failing).Ok()) << failing;
    const std::string reason = RunScript(document.Get(), "\r\nnone").Error();
    EXPECT_TRUE(reason.starts_with("the script failed in line 2: ReferenceError")) << reason;
    EXPECT_FALSE(RunScript(document.Get(), std::string("1\0 2", 4)).Ok());
}
