// Texts that are settings more or less: from the pieces of the format, and from a good text with
// mistakes. The same ones in each run.
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>

namespace support {

class GeneratedTexts {
public:
    // good: settings to put mistakes into; not empty.
    explicit GeneratedTexts(std::string good) : fGood(std::move(good)) {}

    std::string Next() {
        switch (Below(3)) {
        case 0:
            return Faulty();
        case 1:
            return Pieces();
        default:
            return "<<" + Pieces() + ">> setalembicorparams\n" + (Below(2) == 0 ? Pieces() : "");
        }
    }

private:
    std::size_t Below(std::size_t end) { return fRandom() % end; }

    std::string Piece() {
        static std::string const kPieces =
            "<<~>>~/A~/B 1 ~/C (x) ~/~[~]~(~)~\\~<~>~true ~-~010~1e5~1.0e5~.5~%~\n~\r\n~ ~x~{~\f~"
            "+1 ~<FE>~/D [ 1 2 ] ~/E << /F 1 >> ~<< >>~-inf.0~0x1F~9.5 ~false~\t~\xE9~"
            "setalembicorparams~" +
            std::string(1, '\0') + "~/" + std::string(255, 'n') + " ~/" + std::string(256, 'n') +
            " ~";
        static auto const kCount =
            static_cast<std::size_t>(std::count(kPieces.begin(), kPieces.end(), '~'));
        std::size_t first = 0;
        for (std::size_t piece = Below(kCount); piece > 0; --piece) {
            first = kPieces.find('~', first) + 1;
        }
        return kPieces.substr(first, kPieces.find('~', first) - first);
    }

    std::string Pieces() {
        std::string text;
        for (std::size_t count = Below(12); count > 0; --count) {
            text += Piece();
        }
        return text;
    }

    std::string Faulty() {
        std::string text = fGood;
        for (std::size_t count = 1 + Below(3); count > 0; --count) {
            std::size_t const place = Below(text.size());
            text.replace(place, Below(4), Below(2) == 0 ? Piece() : "");
        }
        return text;
    }

    std::string fGood;
    std::mt19937 fRandom{1}; // NOLINT(cert-msc51-cpp): the same texts in each run
};

} // namespace support
