#ifndef FERRULE_OPENHOST_VALUES_CAB_VALUE_H
#define FERRULE_OPENHOST_VALUES_CAB_VALUE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "hostapi/HostRecords.h"
#include "openhost/core/Memory.h"

namespace openhost {

/// A visitor made of one function for each alternative.
template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};

class CCabinet;
class CHostText;

/// One block of shared memory with its owner; freed with the host's free.
class CSharedBlock {
public:
    CSharedBlock() = default;
    CSharedBlock(void* adopted, std::size_t size) : m_bytes(adopted), m_size(size) {}
    char* Bytes() const { return static_cast<char*>(m_bytes.get()); }
    std::size_t Size() const { return m_size; }
    std::string_view View() const { return {Bytes(), m_size}; }
    char* Release() { return static_cast<char*>(m_bytes.release()); }

private:
    struct Free {
        void operator()(void* block) const { FreeShared(block); }
    };
    std::unique_ptr<void, Free> m_bytes;
    std::size_t m_size = 0;
};

struct CabNull {};
struct CabAtom {
    ASAtom atom;
};
/// A C string; its size leaves out the zero at its end.
struct CabString {
    CSharedBlock block;
};
struct CabBinary {
    CSharedBlock block;
};
/// A pointer with the name of its type. All copies share one target; `destroy` runs on it with the last of them.
struct CabPointer {
    struct Target {
        void* pointer;
        ASCabPointerDestroyProc destroy;
    };
    std::string type;
    std::shared_ptr<Target> target;
};

/// What an entry of a cab holds. Texts and nested cabs are living host objects that the entry owns.
using CabValue = std::variant<CabNull, bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double,
                              CabAtom, CabString, CabBinary, CabPointer, CHostText*, CCabinet*>;

ASCabValueType TypeOf(const CabValue& value);

/// Copies texts, bytes and nested cabs; of a pointer the reference. The copy is not yet inside any cab.
CabValue CopyValue(const CabValue& value);

/// Frees what the value owns. Runs the destroy procedure of a pointer whose last reference this was; it may raise.
void DestroyValue(CabValue value);

bool EqualValues(const CabValue& one, const CabValue& other);

}  // namespace openhost

#endif
