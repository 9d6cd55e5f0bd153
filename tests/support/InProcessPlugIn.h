// A plug-in in the test's own process: its initialisation does what the test says.
#pragma once

#include <functional>

#include "hostapi/JobsTable.h"

namespace in_process {

inline std::function<void()> g_initialise;
inline HFT g_core = nullptr;

template <class SlotProc>
SlotProc Slot(const char* table, ASVersion version, int slot)
{
    const auto atom = reinterpret_cast<ASAtomFromStringSlotProc>(g_core[kSlotASAtomFromString])(table);
    const auto find = reinterpret_cast<ASExtensionMgrGetHFTSlotProc>(g_core[kSlotASExtensionMgrGetHFT]);
    return reinterpret_cast<SlotProc>(find(atom, version)[slot]);
}

template <class SlotProc>
SlotProc Jobs(int slot)
{
    return Slot<SlotProc>(HOST_TABLE_JOBS, kTableJobsVersion, slot);
}

inline ASBool HOSTCALL Init()
{
    if (g_initialise) g_initialise();
    return 1;
}

inline ASBool HOSTCALL Handshake(ASUns32, void* data)
{
    static_cast<PIHandshakeData_V0200*>(data)->initCallback = reinterpret_cast<ASCallback>(&Init);
    return 1;
}

inline ASBool HOSTCALL Setup(ASUns32, void* data)
{
    auto& sdk = *static_cast<PISDKData_V0200*>(data);
    g_core = sdk.coreHFT;
    sdk.handshakeCallback = reinterpret_cast<ASCallback>(&Handshake);
    return 1;
}

/// The entry point to give to the host under test.
inline ASBool HOSTCALL Entry(ASUns32 version, ASUns32* answered, PISetupSDKProcType* setup, void*)
{
    *answered = version;
    *setup = &Setup;
    return 1;
}

}  // namespace in_process
