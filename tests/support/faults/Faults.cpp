// A library to preload: stands in front of every file call of a program and counts it, over all processes of a run,
// and lets one of them fail or be the process's last.
//
//   FERRULE_FAULT_COUNT=FILE         the shared counter is kept in FILE.counter; FILE gets a line for each call:
//                                    number, program, call and path, separated by tabs. Both are made when missing.
//   FERRULE_FAULT_AT=N:WHAT          the N-th call fails with the error named WHAT ("ENOSPC", or a number), or, with
//                                    "die", the process is killed just before it.
#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr int kDie = -1;

std::string Variable(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string ProgramName()
{
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    const std::string name(path, length < 0 ? 0 : static_cast<std::size_t>(length));
    return name.substr(name.rfind('/') + 1);
}

// A test that asks for something unknown must not pass because nothing happens.
[[noreturn]] void Refuse(const std::string& text)
{
    (void)!write(STDERR_FILENO, text.data(), text.size());
    _exit(125);
}

int ErrorNamed(const std::string& name)
{
    if (name == "die") return kDie;
    for (int error = 1; error < 200; ++error)
        if (const char* known = strerrorname_np(error); known && name == known) return error;
    const int number = std::atoi(name.c_str());
    if (number <= 0) Refuse("FERRULE_FAULT_AT: no such error: " + name + "\n");
    return number;
}

class CFaults {
public:
    static CFaults& Instance()
    {
        static CFaults faults;
        return faults;
    }

    int Before(const std::string& call, const char* path)
    {
        const unsigned long number = ++*m_counter;
        Note(number, call, path);
        if (number != m_at) return 0;
        if (m_error == kDie) kill(getpid(), SIGKILL);
        return m_error;
    }

private:
    CFaults()
    {
        m_program = ProgramName();
        ReadWhere(Variable("FERRULE_FAULT_AT"));
        if (const std::string list = Variable("FERRULE_FAULT_COUNT"); !list.empty()) Share(list);
    }

    void ReadWhere(const std::string& where)
    {
        if (where.empty()) return;
        const auto colon = where.find(':');
        m_at = std::strtoul(where.c_str(), nullptr, 10);
        if (colon == std::string::npos || m_at == 0) Refuse("FERRULE_FAULT_AT: not N:WHAT: " + where + "\n");
        m_error = ErrorNamed(where.substr(colon + 1));
    }

    void Share(const std::string& list)
    {
        const int counter = open((list + ".counter").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        m_list = open(list.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
        if (m_list >= 0) m_list = fcntl(m_list, F_DUPFD_CLOEXEC, 100);  // no number that a program might expect free
        if (m_list < 0 || ftruncate(counter, sizeof *m_counter) != 0) Refuse("no count in " + list + "\n");
        void* shared = mmap(nullptr, sizeof *m_counter, PROT_READ | PROT_WRITE, MAP_SHARED, counter, 0);
        if (shared == MAP_FAILED) Refuse("no counter for " + list + "\n");
        close(counter);
        m_counter = static_cast<std::atomic<unsigned long>*>(shared);
    }

    void Note(unsigned long number, const std::string& call, const char* path) const
    {
        if (m_list < 0) return;
        std::string line = std::to_string(number) + '\t' + m_program + '\t' + call + '\t';
        for (; *path; ++path) line += *path == '\n' || *path == '\t' ? '?' : *path;
        line += '\n';
        (void)!write(m_list, line.data(), line.size());
    }

    static_assert(std::atomic<unsigned long>::is_always_lock_free, "shared between processes");
    std::atomic<unsigned long> m_ownCounter{0};
    std::atomic<unsigned long>* m_counter = &m_ownCounter;
    std::string m_program;
    unsigned long m_at = 0;
    int m_error = 0;
    int m_list = -1;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int FerruleBeforeFileCall(const char* call, const char* path)
{
    const int before = errno;
    const int error = CFaults::Instance().Before(call, path);
    errno = before;
    return error;
}
