// A host of a few functions, made by hand: frames that are counted, atoms, tables with versions, error texts.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "hostapi/HostTypes.h"

/// One at a time; its tables work as long as it lives.
class CHandMadeHost {
public:
    static constexpr ASVersion kUnknown = 0xFFFFFFFF;
    static constexpr int kSlots = 160;

    CHandMadeHost();
    ~CHandMadeHost();

    struct Table {
        ASVersion version = 0;
        bool raises = false;  // asking for this table raises
        std::array<void*, kSlots> slots{};
    };

    HFT Core() { return tables["Core"].slots.data(); }

    std::map<std::string, Table> tables;  // all that a plug-in wants, each at a version that is new enough
    std::map<ASErrorCode, std::string> errorTexts;
    bool errorTextRaises = false;

    int Depth() const { return static_cast<int>(m_frames.size()); }
    int Pops() const { return m_pops; }

    /// What the host's functions do when something goes wrong.
    [[noreturn]] static void Raise(ASErrorCode code);

private:
    struct Frame {
        void* environment;
        void(HOSTCALL* restore)(void*);
    };

    static void HOSTCALL PushFrame(void* environment, void(HOSTCALL* restore)(void*));
    static void HOSTCALL PopFrame();
    static ASErrorCode HOSTCALL LastCode();
    static ASAtom HOSTCALL AtomFromString(const char* text);
    static HFT HOSTCALL GetTable(ASAtom name, ASVersion version);
    static ASVersion HOSTCALL GetVersion(HFT table);
    static const char* HOSTCALL GetErrorString(ASErrorCode code, char* buffer, ASTArraySize size);

    std::vector<Frame> m_frames;
    std::vector<std::string> m_atoms;
    ASErrorCode m_lastCode = 0;
    int m_pops = 0;
};
