#include "tools/ChosenFilesWork.h"

#include <algorithm>

#include "common/Log.h"

std::string CChosenFilesWork::InputPlaces(const ExecutorSettings& settings, const std::vector<std::string>&, Asking,
                                          CLogWriter& log, const TakePlace& take) const
{
    const std::vector<std::string> places = ChosenPlaces(settings);
    if (places.empty()) return "No files or folders are named.";
    log.NameNumber("Number of chosen files and folders", static_cast<long long>(places.size()), 1);
    if (take) std::ranges::for_each(places, take);
    return {};
}
