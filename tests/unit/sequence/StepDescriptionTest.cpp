#include <gtest/gtest.h>

#include "sequence/StepDescription.h"

namespace {

/// The plug-in with two steps of its own, for as long as the object lives. The second works for all files at once.
class COwnSteps {
public:
    COwnSteps() { SetOwnSteps({&m_step, &m_shared}); }
    ~COwnSteps() { SetOwnSteps({}); }

private:
    OpenParameter m_open[1] = {{"Count"}};
    StepDescription m_step{.handler = "QLNX_FerruleTestCommand", .open = m_open};
    StepDescription m_shared{.handler = "QLNX_FerruleIndexCommand", .shared = SharedWork::Index, .open = m_open};
};

}  // namespace

TEST(StepDescription, WhatNobodyDescribesIsTakenCarefully)
{
    const COwnSteps plugIn;
    // Which of a parameter that sounds harmless, one that sounds like a password and the open one of the step above
    // are hidden, as texts and as numbers.
    const struct {
        const char* handler;
        StepMaker maker;
        bool tried;
        const char* hiddenTexts;
        const char* hiddenNumbers;
    } rows[] = {{"QLNX_FerruleTestCommand", StepMaker::Plugin, true, "Name Pwd ", "Name Pwd "},
                {"QLNX_FerruleIndexCommand", StepMaker::Plugin, false, "Name Pwd ", "Name Pwd "},
                {"QLNX_FerruleNextVersionCommand", StepMaker::Plugin, true, "Name Pwd Count ", "Name Pwd Count "},
                {"qlnx_ferruletestcommand", StepMaker::Other, false, "Name Pwd Count ", "Name Pwd Count "},
                {"DocSecurity", StepMaker::Host, true, "Name Pwd Count ", "Pwd "},
                {"docsecurity", StepMaker::Other, false, "Name Pwd Count ", "Pwd "},
                {"CropPages", StepMaker::Host, true, "Pwd ", "Pwd "},
                {"COMP:AddBates", StepMaker::Host, true, "Pwd ", "Pwd "},
                {"Maker:Step", StepMaker::Other, false, "Pwd ", "Pwd "},
                {"", StepMaker::Other, false, "Pwd ", "Pwd "}};
    for (const auto& row : rows) {
        const StepDescription& step = DescribeStep(row.handler);
        EXPECT_EQ(step.maker, row.maker) << row.handler;
        EXPECT_EQ(MayBeTried(step), row.tried) << row.handler;
        const CSecretEntries secrets(DescribeMeantStep(row.handler));
        std::string texts, numbers;
        for (const char* key : {"Name", "Pwd", "Count"}) {
            if (secrets.Hides(key, std::string("x"))) texts += key + std::string(" ");
            if (secrets.Hides(key, 7)) numbers += key + std::string(" ");
            EXPECT_FALSE(secrets.Hides(key, true) || secrets.Hides(key, WideText{})) << row.handler << ' ' << key;
        }
        EXPECT_EQ(texts, row.hiddenTexts) << row.handler;
        EXPECT_EQ(numbers, row.hiddenNumbers) << row.handler;
    }
}
