#include <array>

#include "unit/openhost_values/ValuesHost.h"

namespace {

constexpr ASFixed F(double value) { return static_cast<ASFixed>(value * 65536); }
constexpr ASFixed kMax = 0x7FFFFFFF;
constexpr ASFixed kMin = -kMax - 1;

class Fixed : public CValuesHost {};

TEST_F(Fixed, ArithmeticRoundsAndStopsAtTheEndsOfTheRange)
{
    const struct {
        ASFixed one, other, product, quotient;
    } rows[] = {{F(3), F(2), F(6), F(1.5)},
                {F(-1.5), F(0.5), F(-0.75), F(-3)},
                {F(30000), F(2), kMax, F(15000)},
                {F(-30000), F(0.25), F(-7500), kMin},
                {F(1), F(0), 0, kMax},
                {F(-1), F(0), 0, kMin},
                {1, F(0.5), 1, 2},
                {kMin, kMin, kMax, F(1)}};
    for (const auto& row : rows) {
        EXPECT_EQ(SUPPORT(ASFixedMul)(row.one, row.other), row.product) << row.one << ' ' << row.other;
        EXPECT_EQ(SUPPORT(ASFixedDiv)(row.one, row.other), row.quotient) << row.one << ' ' << row.other;
    }
    EXPECT_EQ(SUPPORT(FloatToASFixed)(1e9), kMax);
    EXPECT_EQ(SUPPORT(ASFixedToFloat)(F(-0.5)), -0.5f);
}

TEST_F(Fixed, NumbersAreWrittenWithoutIdleZeros)
{
    const struct {
        ASFixed number;
        ASSmallCount precision;
        ASSize_t room;
        const char* text;
    } rows[] = {{F(1.5), 4, 20, "1.5"}, {F(10), 4, 20, "10"},   {F(-0.25), 1, 20, "-0.2"},
                {F(100), 0, 20, "100"}, {F(12.5), 3, 4, "12."}, {F(1), -3, 20, "1"}};
    for (const auto& row : rows) {
        char text[20] = "?";
        SUPPORT(ASFixedToCString)(row.number, text, row.room, row.precision);
        EXPECT_STREQ(text, row.text);
    }
    EXPECT_EQ(SUPPORT(ASCStringToFixed)("-2.25pt"), F(-2.25));
    EXPECT_EQ(SUPPORT(ASCStringToFixed)("none"), 0);
}

TEST_F(Fixed, AMatrixAndItsInverseUndoEachOther)
{
    ASFixedMatrix matrix{0, F(2), F(-2), 0, F(10), F(20)};  // a quarter turn, doubled and moved
    ASFixedMatrix inverse{};
    SUPPORT(ASFixedMatrixInvert)(&inverse, &matrix);
    ASFixedPoint point{F(3), F(4)};
    SUPPORT(ASFixedMatrixTransform)(&point, &matrix, &point);
    EXPECT_EQ((std::pair{point.h, point.v}), (std::pair{F(2), F(26)}));
    SUPPORT(ASFixedMatrixTransform)(&point, &inverse, &point);
    EXPECT_EQ((std::pair{point.h, point.v}), (std::pair{F(3), F(4)}));
    ASFixedRect rect{F(0), F(2), F(1), F(0)};
    SUPPORT(ASFixedMatrixTransformRect)(&rect, &matrix, &rect);
    EXPECT_EQ((std::array{rect.left, rect.top, rect.right, rect.bottom}), (std::array{F(6), F(22), F(10), F(20)}));
    ASFixedMatrix move{F(1), 0, 0, F(1), F(1), 0};
    SUPPORT(ASFixedMatrixConcat)(&matrix, &matrix, &move);  // moves before it turns
    EXPECT_EQ((std::pair{matrix.h, matrix.v}), (std::pair{F(10), F(22)}));
    ASFixedMatrix flat{F(1), F(2), F(2), F(4), 0, 0};
    EXPECT_REFUSED(SUPPORT(ASFixedMatrixInvert)(&inverse, &flat));
}

}  // namespace
