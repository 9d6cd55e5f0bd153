#include "hostcalls/CabFile.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "pdflib/AcrobatDoc.h"
#include "support/Interposer.h"
#include "unit/hostcalls/HostedCalls.h"
#include "unit/openhost_pdf/TestPdfs.h"

namespace {

/// Everything that opens something of the host's, once. The document is shown and closed, or left to its destructor.
void UseTheHost(const std::string& input, const std::string& output, const std::string& cabFile, bool shown)
{
    CAcrobatDoc doc;
    doc.Open(input);
    EXPECT_EQ(shown && doc.OpenView(), shown);
    EXPECT_EQ(doc.CurrentFile(), input);
    StandardSecurityRequest request;
    request.openPassword = "open";
    doc.ApplyStandardSecurity(request);
    doc.SaveTo(output, 0);
    if (shown) {
        EXPECT_EQ(doc.Close(), CAcrobatDoc::Closed::View);
    }
    CCab outer;
    outer.PutBinary("bytes", "x");
    outer.PutCab("path", PathCab(input));
    (void)NativeFromPathCab(outer.Cab("path"));
    const auto cab = ReadCabFile(cabFile);
    EXPECT_TRUE(cab || testsupport::CCallGate::Instance().Raised());
}

}  // namespace

class EveryCallRaises : public CHostedCalls, public testing::WithParamInterface<bool> {};

TEST_P(EveryCallRaises, AndNothingStaysOpenOrIsWrittenUnprotected)
{
    const std::string input = m_folder.Write("in.pdf", SamplePdf(1));
    const std::string cabFile = m_folder / "cab";
    ASSERT_TRUE(WriteCabFile(cabFile, CCab()));
    testsupport::InterposeEverything(openhost::Part<openhost::CTables>());
    auto& gate = testsupport::CCallGate::Instance();
    int calls = 0;
    for (bool raised = true; raised;) {
        const std::string output = m_folder / ("out" + std::to_string(++calls) + ".pdf");
        gate.RaiseOnCall(calls);
        const auto error = CatchHostError([&] { UseTheHost(input, output, cabFile, GetParam()); });
        raised = gate.Raised();
        const std::string where = "call " + std::to_string(calls) + ": " + gate.RaisedName();
        gate.RaiseOnCall(0);
        EXPECT_EQ(Leftovers(), "") << where;
        EXPECT_TRUE(raised || !error) << where;
        const std::string written = FileBytes(output);
        EXPECT_TRUE(written == "<missing>" || written.find("/Encrypt") != std::string::npos) << where;
    }
    EXPECT_GT(calls, 20);  // there are at least so many
}

INSTANTIATE_TEST_SUITE_P(HiddenAndShown, EveryCallRaises, testing::Bool());
