// The record of a run.
#pragma once

#include "platform/Files.h"
#include "supervisor/RunObserver.h"

#include <string>

/// A file that can be read while it grows.
class CRecordWriter {
public:
    /// Creates the file, or empties it. Without one, lines only go to the observer, who is borrowed.
    explicit CRecordWriter(CRunObserver& observer) : m_observer(observer) {}
    platform::FileResult Open(const std::string& path);
    void Add(const FileRecord& record);
    /// The first failure of writing.
    platform::FileResult Result() const { return {m_error}; }
    platform::FileResult Close();

private:
    CRunObserver& m_observer;
    platform::Stream m_file;
    int m_error = 0;
};
