// Objects inside documents as plug-ins hold them: two numbers, whatever the kind of object.
#pragma once

#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include <qpdf/QPDFObjectHandle.hh>

#include "hostapi/HostTypes.h"

namespace openhost {

struct HeldObject {
    PDDoc document = nullptr;
    QPDFObjectHandle object = QPDFObjectHandle::newNull();
};

/// Which object of which document a plug-in means. Handles live until their document is saved or closed; an object of
/// the file has one handle however often it is asked for. The null object has the handle of two zeros.
class CObjects {
public:
    template <class Handle>
    Handle Hold(PDDoc document, QPDFObjectHandle object)
    {
        const auto [a, b] = Add(document, object);
        Handle handle{};
        handle.a = a;
        handle.b = b;
        return handle;
    }

    /// What a handle stands for: null for one that is not, or no longer, known.
    template <class Handle>
    HeldObject Find(Handle handle) const
    {
        return FindNumbered(handle.a, handle.b);
    }

    /// All handles of the document are dead from here on.
    void Forget(PDDoc document);

private:
    struct Numbered {
        PDDoc document = nullptr;
        std::vector<QPDFObjectHandle> objects;
        std::map<QPDFObjGen, std::int32_t> numbers;
    };

    std::pair<std::int32_t, std::int32_t> Add(PDDoc document, QPDFObjectHandle object);
    HeldObject FindNumbered(std::int32_t number, std::int32_t generation) const;

    std::unordered_map<PDDoc, std::int32_t> m_generations;
    std::unordered_map<std::int32_t, Numbered> m_byGeneration;
    std::int32_t m_lastGeneration = 0;
};

}  // namespace openhost
