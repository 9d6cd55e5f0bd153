#ifndef FERRULE_TESTS_OPENHOST_JOBS_PIPES_H
#define FERRULE_TESTS_OPENHOST_JOBS_PIPES_H

#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

/// For bytes; both ends stay with this process. False when the system refuses.
bool MakePipe(int (&ends)[2]);
/// What lies in the pipe, without waiting for more.
std::string ReadWaiting(int reader);

/// The other end of a worker's lines, written beforehand: all answers lie ready, all questions are read afterwards.
/// Both must fit into a pipe.
class CScriptedSupervisor {
public:
    explicit CScriptedSupervisor(std::string_view answers)
    {
        if (!MakePipe(m_answers) || !MakePipe(m_said)) throw std::runtime_error("no pipes");
        if (!answers.empty() &&
            write(m_answers[1], answers.data(), answers.size()) != static_cast<int>(answers.size()))
            throw std::runtime_error("the answers do not fit");
        close(m_answers[1]);
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
    std::string Said() { return ReadWaiting(m_said[0]); }

private:
    int m_answers[2];
    int m_said[2];
};

#endif
