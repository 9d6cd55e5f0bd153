#ifndef FERRULE_OPENHOST_JOBS_LINE_STREAM_H
#define FERRULE_OPENHOST_JOBS_LINE_STREAM_H

#include <optional>
#include <string>
#include <string_view>

namespace openhost {

/// Lines to and from another program. Owns both descriptors.
class CLineStream {
public:
    CLineStream(int input, int output) : m_input(input), m_output(output) {}
    ~CLineStream();
    CLineStream(const CLineStream&) = delete;
    CLineStream& operator=(const CLineStream&) = delete;

    /// Takes standard input and output away from the rest of the process, so that nothing else can get between the
    /// lines: reading finds the end at once, and what is written to standard output goes to standard error. Programs
    /// started later do not inherit the lines. Null when the system refuses.
    static std::optional<std::pair<int, int>> TakeStandardStreams();

    /// Keeps the line until Flush, or until a good deal has come together.
    void Put(std::string_view line);
    /// False, now and from then on, when nobody reads any more.
    bool Flush();
    /// Waits. Nothing at the end of the input; a last line without its end does not count.
    std::optional<std::string> NextLine();

private:
    int m_input, m_output;
    std::string m_waiting;  // to be written
    std::string m_read;     // read, but not handed out; begins at m_next
    std::size_t m_next = 0;
    bool m_writable = true;
};

}  // namespace openhost

#endif
