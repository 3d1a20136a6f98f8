// The system's read and write with interruptions and short counts on demand, and its word on raised
// rights: the linker leads the calls of static code through here (see --wrap in CMakeLists.txt).
#pragma once

namespace support {

// While one lives, every second call is interrupted by a signal, and the others move at most two
// bytes. At most one lives at a time.
class TransferDouble {
public:
    TransferDouble();
    ~TransferDouble();
    TransferDouble(TransferDouble const&) = delete;
    TransferDouble& operator=(TransferDouble const&) = delete;
};

// Lets the program look as if it ran with raised rights (a set-user-ID program).
void SetRaisedRights(bool areRaised);

} // namespace support
