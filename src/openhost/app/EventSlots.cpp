#include "openhost/app/IdleProcedures.h"
#include "openhost/app/Notifications.h"
#include "openhost/app/Slots.h"

namespace openhost {

namespace {

void RegisterIdle(AVIdleProc procedure, void* clientData, ASUns32 period)
{
    Part<CIdleProcedures>().Register(procedure, clientData, period);
}

void RegisterIdleWithName(AVIdleProc procedure, void* clientData, ASUns32 period, const char*, const char*)
{
    Part<CIdleProcedures>().Register(procedure, clientData, period);
}

void RegisterIdleExWithName(AVIdleProc procedure, void* clientData, ASBool, ASUns32 delay, ASBool repeating,
                            ASUns32 period, ASUns32, const char*, const char*)
{
    Part<CIdleProcedures>().Register(procedure, clientData, period, repeating != 0, delay);
}

void UnregisterIdle(AVIdleProc procedure, void* clientData)
{
    Part<CIdleProcedures>().Unregister(procedure, clientData);
}

void RegisterNotification(NSelector selector, ASExtension owner, void* procedure, void* clientData)
{
    Part<CNotifications>().Register(selector, owner, procedure, clientData);
}

void UnregisterNotification(NSelector selector, ASExtension owner, void* procedure, void* clientData)
{
    Part<CNotifications>().Unregister(selector, owner, procedure, clientData);
}

ASBool CanQuit() { return 1; }

/// Plug-ins only ever ask while the host is busy calling them.
ASBool IsIdle() { return 0; }

void Yield(double) {}

}  // namespace

void OfferEventSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppRegisterIdleProc, RegisterIdle);
    OFFER(tables, AcroView, AVAppRegisterIdleProcWithName, RegisterIdleWithName);
    OFFER(tables, AcroView, AVAppRegisterIdleProcExWithName, RegisterIdleExWithName);
    OFFER(tables, AcroView, AVAppUnregisterIdleProc, UnregisterIdle);
    OFFER(tables, AcroView, AVAppRegisterNotification, RegisterNotification);
    OFFER(tables, AcroView, AVAppUnregisterNotification, UnregisterNotification);
    OFFER(tables, AcroView, AVAppCanQuit, CanQuit);
    OFFER(tables, AcroView, AVAppIsIdle, IsIdle);
    OFFER(tables, AcroView, AVAppYieldToOtherApps, Yield);
}

}  // namespace openhost
