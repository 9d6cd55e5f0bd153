#include "base/Base64.h"

#include <gtest/gtest.h>

TEST(Base64, SkipsWhatIsNotInItsAlphabet)
{
    const struct {
        const char* text;
        const char* bytes;
    } rows[] = {{"RmVycnVsZQ==", "Ferrule"},
                {"RmVy\r\ncnVs\n ZQ", "Ferrule"},
                {"Zg", "f"},
                {"Zm8", "fo"},
                {"Z", ""},
                {"====", ""},
                {"-_Zm9v*", "foo"},
                {"", ""}};
    for (const auto& row : rows) EXPECT_EQ(DecodeBase64(row.text), row.bytes) << row.text;
    EXPECT_EQ(DecodeBase64("AP+/"), std::string("\x00\xFF\xBF", 3));
}
