// Where a run takes its input files from.
#pragma once

#include <optional>
#include <string>

struct RunInput {
    std::string path;
    int number = 0;                // in the whole run, from 1
    bool finalActionOnly = false;  // its result is there already
};

/// Hands out the input files of one run, one by one. May throw CHostException.
class CInputSource {
public:
    virtual ~CInputSource() = default;

    /// The number of files of the whole run, also of those that somebody else processes. Asked once, before Next.
    virtual int Total() = 0;

    /// The next file to process; nothing when there is none left or the run is to end.
    virtual std::optional<RunInput> Next() = 0;
};
