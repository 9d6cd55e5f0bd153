#include "tools/ChosenFilesWork.h"

#include "common/Log.h"

Expected<std::vector<std::string>> CChosenFilesWork::InputPlaces(const ExecutorSettings& settings,
                                                                 const std::vector<std::string>&, Asking,
                                                                 CLogWriter& log) const
{
    std::vector<std::string> places = ChosenPlaces(settings);
    if (places.empty()) return Failure("No files or folders are named.");
    log.NameNumber("Number of chosen files and folders", static_cast<long long>(places.size()), 1);
    return places;
}
