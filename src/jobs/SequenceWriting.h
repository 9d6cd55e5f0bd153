// Puts sequence files where they belong.
#pragma once

#include "base/Expected.h"
#include "hostcalls/Cab.h"

#include <string>

/// A title for a sequence that has none: the name of its file, as text.
[[nodiscard]] std::string TitleFromPath(const std::string& path);

struct SequenceTarget {
    std::string path;
    bool overwrite = false;
    bool holdsPasswords = false;  // then only the owner may read the file
};

/// Why the file cannot be written, found out before there is anything to write; empty when nothing stands against it.
[[nodiscard]] std::string TargetProblem(const SequenceTarget& target);

/// Writes the file completely or not at all. Answers a sentence that names the file and says what to do; empty when
/// it is written.
[[nodiscard]] std::string PutSequenceFile(const SequenceTarget& target, const std::string& bytes);

/// The cab in the host's own form. The host writes to files only: a temporary one, which its owner alone may read,
/// stands in the folder of `beside` meanwhile. Read back by the host before it is answered. Throws CHostException.
[[nodiscard]] Expected<std::string> HostFormOf(CCabView cab, const std::string& beside);
