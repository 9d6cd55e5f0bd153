#ifndef FERRULE_TESTS_OPENHOST_JOBS_PIPES_H
#define FERRULE_TESTS_OPENHOST_JOBS_PIPES_H

#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

/// The other end of a worker's lines, written beforehand: all answers lie ready, all questions are read afterwards.
/// Both must fit into a pipe.
class CScriptedSupervisor {
public:
    explicit CScriptedSupervisor(std::string_view answers)
    {
        if (pipe(m_answers) != 0 || pipe(m_said) != 0) throw std::runtime_error("no pipes");
        if (write(m_answers[1], answers.data(), answers.size()) != static_cast<ssize_t>(answers.size()))
            throw std::runtime_error("the answers do not fit");
        close(m_answers[1]);
        fcntl(m_said[0], F_SETFL, O_NONBLOCK);
    }
    ~CScriptedSupervisor()
    {
        if (m_said[0] >= 0) close(m_said[0]);
    }
    CScriptedSupervisor(const CScriptedSupervisor&) = delete;
    CScriptedSupervisor& operator=(const CScriptedSupervisor&) = delete;

    /// The worker's ends, which are its own from here on.
    int WorkerInput() const { return m_answers[0]; }
    int WorkerOutput() const { return m_said[1]; }
    void StopReading()
    {
        close(m_said[0]);
        m_said[0] = -1;
    }
    /// Everything said since the last time.
    std::string Said()
    {
        std::string text;
        char part[4096];
        for (ssize_t length; (length = read(m_said[0], part, sizeof part)) > 0;)
            text.append(part, static_cast<std::size_t>(length));
        return text;
    }

private:
    int m_answers[2];
    int m_said[2];
};

#endif
