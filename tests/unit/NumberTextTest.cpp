#include "format/NumberText.h"

#include "tests/support/Rounds.h"

#include <bit>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>

namespace format {

namespace {

// What the C library makes of the token in the "C" locale.
ScannedNumber Expected(std::string const& token) {
    char* end = nullptr;
    double const value = token.find('.') != std::string::npos
                             ? std::strtod(token.c_str(), &end)
                             : static_cast<double>(std::strtol(token.c_str(), &end, 0));
    return {value, static_cast<unsigned long>(end - token.c_str())};
}

void ExpectSame(std::string const& token) {
    ScannedNumber const expected = Expected(token);
    ScannedNumber const found = ScanNumber(token);
    EXPECT_EQ(expected.fSize, found.fSize) << token;
    // Bit by bit, for NaN and the sign of zero.
    EXPECT_EQ(
        std::bit_cast<std::uint64_t>(expected.fValue), std::bit_cast<std::uint64_t>(found.fValue))
        << token << ": " << expected.fValue << " but " << found.fValue;
}

} // namespace

TEST(NumberText, ReadsAsTheCLibraryDoesInItsOwnLocale) {
    std::istringstream tokens(
        "08 0x 0xg -0X1F 0x-1 9223372036854775807 -9223372036854775809 0xffffffffffffffffff - . -. "
        "1.5e3 1.5e+ 0x.8 0x. 0x1.8p1 0x1.8p 0x-1.8 --1.5 -inf. -nan. -nan(x). 1.0e400 -1.0e400 "
        "1.0e-400 "
        "0.0e400 1.0e99999999999999999999 1.0e-99999999999999999999 0x1.0p2000 0x1.0p-2000 "
        "4.9e-324. 2.4e-324. 1.0e-310 0x0.0000000000001p-1022 "
        "0.00000000000000000000000001e400 100000000000000000000000.0e-340 "
        "1.7976931348623157e308. 1.7976931348623159e308. 1.e9223372036854775807 "
        "0.1e-9223372036854775808 100000000000000000000.e9223372036854775800 "
        "0.0001e-9223372036854775806 0x1.0p9223372036854775807 0x0.01p-9223372036854775808 "
        "0x0.0p2147483630 123456789012345678901234567890.5 0000000000000000000000.5 ");
    for (std::string token; tokens >> token;) {
        ExpectSame(token);
    }
    ExpectSame("- 1");
    // Exponents that wrap around elsewhere.
    ExpectSame("0x0." + std::string(250, '0') + "1p2147483630");
    ExpectSame("0x0." + std::string(250, '0') + "1p-2147483630");
}

TEST(NumberText, AgreesWithTheCLibraryOnRandomTokens) {
    std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same tokens in every run
    std::string const alphabet = "0012356789..--xXeEpPaf+";
    for (int round = 0; round < support::Rounds(100000); ++round) {
        std::string token(1, "-0123456789"[random() % 11]);
        for (auto length = random() % 12; length > 0; --length) {
            token += alphabet[random() % alphabet.size()];
        }
        ExpectSame(token);
    }
}

TEST(NumberText, ReadsAPointWhateverTheHostsLocale) {
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "de_DE.UTF-8"))
        << "LOCPATH must name the test locale";
    ASSERT_STREQ(",", std::localeconv()->decimal_point);
    ScannedNumber const number = ScanNumber("1.5");
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(1.5, number.fValue);
    EXPECT_EQ(3U, number.fSize);
}

} // namespace format
