#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "openhost/app/AppState.h"
#include "openhost/app/Slots.h"
#include "openhost/commands/Slots.h"
#include "openhost/conversion/Converters.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Host.h"
#include "openhost/core/Tables.h"
#include "openhost/documents/Slots.h"
#include "openhost/files/Slots.h"
#include "openhost/values/Slots.h"

/// Calls a function of the host as a plug-in does, through its table; a raise arrives as CHostRaise.
#define HOST(table, function, ...)                                                                     \
    openhost::CallPlugIn(reinterpret_cast<function##SlotProc>(openhost::Part<openhost::CTables>().Get( \
        openhost::Table::table)[kSlot##function]) __VA_OPT__(, ) __VA_ARGS__)

/// A host without plug-ins: tables, menus, a clock that stands still unless moved, remarks in a list.
class CHostFixture : public testing::Test {
protected:
    CHostFixture()
    {
        using namespace openhost;
        Part<CDiagnostics>().SetListener([this](std::string_view remark) { said.emplace_back(remark); });
        Part<AppClock>().milliseconds = [this] { return now; };
        auto& tables = Part<CTables>();
        OfferCoreSlots(tables);
        OfferValuesSlots(tables);
        OfferFilesSlots(tables);
        OfferDocumentsSlots(tables);
        OfferAppSlots(tables);
        OfferConversionSlots(tables);
        OfferCommandsSlots(tables);
        PrepareApplication();
    }
    std::string SaidAll() const
    {
        std::string all;
        for (const std::string& line : said) all += line + "\n";
        return all;
    }

    std::vector<std::string> said;
    std::uint64_t now = 1000;
    openhost::CHost host;
};

/// The code that `call` raises, 0 when it raises nothing.
template <class Call>
ASErrorCode RaisedBy(Call call)
{
    try {
        call();
    } catch (const openhost::CHostRaise& raise) {
        return raise.Code();
    }
    return 0;
}

#define EXPECT_REFUSED(...) EXPECT_EQ(RaisedBy([&] { __VA_ARGS__; }), genErrBadParm)
