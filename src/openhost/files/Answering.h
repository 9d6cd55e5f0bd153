#pragma once

#include "openhost/core/Raise.h"

namespace openhost {

/// For the functions that answer an error code instead of raising it.
template <class Work>
ASErrorCode Answering(Work work)
{
    try {
        return work();
    } catch (const CHostRaise& raise) {
        return raise.Code() != 0 ? raise.Code() : static_cast<ASErrorCode>(genErrGeneral);
    }
}

}  // namespace openhost
