// The command that shows and clears the log.
#pragma once

#include <cstdint>
#include <string>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "platform/Files.h"

namespace cli {

/// Each Poll answers what was added since the one before, also when the log was emptied or set aside meanwhile and
/// goes on under the same name in a new file.
class CLogTail {
public:
    explicit CLogTail(std::string path) : m_path(std::move(path)) {}

    /// At most some 64 KiB at once; empty when there is nothing new.
    std::string Poll();
    /// Why nothing can be read; a log that does not exist yet is no failure.
    const platform::FileResult& Result() const { return m_result; }

private:
    std::string ReadOpen();
    bool Reopen();

    std::string m_path;
    platform::Stream m_stream;
    platform::FileStamp m_stamp;  ///< of the file that is open
    std::uint64_t m_position = 0;
    platform::FileResult m_result;
};

}  // namespace cli

namespace cli {

int LogCommand(const CArguments& arguments, const Screen& screen);

}  // namespace cli
