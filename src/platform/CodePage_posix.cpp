#include "platform/CodePage.h"

namespace platform {

std::string Utf8FromNarrow(std::string_view narrow) { return std::string(narrow); }

std::string NarrowFromUtf8(std::string_view utf8) { return std::string(utf8); }

}  // namespace platform
