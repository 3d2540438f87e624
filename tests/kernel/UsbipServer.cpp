#include "tests/kernel/UsbipServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace usbip {
namespace {

enum Command : std::uint32_t {
    kCmdSubmit = 1,
    kCmdUnlink = 2,
    kRetSubmit = 3,
    kRetUnlink = 4,
};

constexpr std::uint32_t kDirectionIn = 1;

}  // namespace

/// The 48 bytes before every message of the protocol, words in network order. Words 5 and following
/// depend on the command.
class UsbipServer::Header {
  public:
    enum Word : std::uint8_t { command, sequence, device, direction, endpoint, first, second };

    std::uint32_t word(std::size_t index) const {
        const std::size_t at = index * 4;
        return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
               std::uint32_t{bytes[at + 2]} << 8 | std::uint32_t{bytes[at + 3]};
    }
    void setWord(std::size_t index, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            bytes[index * 4 + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
    /// The setup packet stands at the end, in USB's own byte order.
    Setup setup() const {
        const auto pair = [this](std::size_t at) {
            return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
        };
        return {bytes[40], bytes[41], pair(42), pair(44), pair(46)};
    }

    std::array<std::uint8_t, 48> bytes{};
};

UsbipServer::UsbipServer(int socket, UsbFunction& function)
    : socket_(socket), function_(function), thread_([this] { serve(); }) {}

UsbipServer::~UsbipServer() {
    shutdown(socket_, SHUT_RDWR);
    thread_.join();
    close(socket_);
}

void UsbipServer::serve() {
    while (receive())
        servePayloads();
    shutdown(socket_, SHUT_RDWR);
}

/// Returns once a message has come or the bulk endpoint has something for a pending transfer.
void UsbipServer::waitForWork() const {
    using std::chrono::ceil, std::chrono::milliseconds;
    const bool reading = std::any_of(pending_.begin(), pending_.end(),
                                     [](const Transfer& transfer) { return transfer.bulk; });
    const auto due = std::max(function_.due(), Clock::now());
    const auto left = ceil<milliseconds>(due - Clock::now());
    pollfd waited{socket_, POLLIN, 0};
    poll(&waited, 1, reading ? std::max(0, static_cast<int>(left.count())) : -1);
}

/// Handles one message, if one has come. Returns whether the connection stands.
bool UsbipServer::receive() {
    waitForWork();
    pollfd readable{socket_, POLLIN, 0};
    if (poll(&readable, 1, 0) == 0)
        return true;
    Header message;
    if (!read(message.bytes))
        return false;
    if (message.word(Header::command) == kCmdSubmit)
        return submit(message);
    unlink(message);
    return true;
}

bool UsbipServer::submit(const Header& command) {
    const std::uint32_t sequence = command.word(Header::sequence);
    const std::uint32_t length = command.word(Header::second);
    const bool in = command.word(Header::direction) == kDirectionIn;
    if (command.word(Header::endpoint) != 0) {
        pending_.push_back({sequence, length, true});
        return true;
    }
    Bytes sent(in ? 0 : length);
    if (!read(sent))
        return false;
    const ControlReply reply = function_.control(command.setup(), sent);
    switch (reply.end) {
        case ControlReply::End::answered:
            complete(sequence, 0, in ? static_cast<std::uint32_t>(reply.data.size()) : length,
                     reply.data);
            return true;
        case ControlReply::End::stalled:
            complete(sequence, -EPIPE, 0, {});
            return true;
        case ControlReply::End::unanswered:
            pending_.push_back({sequence, length, false});
            return true;
        case ControlReply::End::gone:
            break;
    }
    return false;
}

/// A transfer that is taken back gets no other answer; one that has ended has had its own.
void UsbipServer::unlink(const Header& command) {
    const std::uint32_t sequence = command.word(Header::first);
    const auto ended =
        std::erase_if(pending_, [&](const Transfer& known) { return known.sequence == sequence; });
    Header answer;
    answer.setWord(Header::command, kRetUnlink);
    answer.setWord(Header::sequence, command.word(Header::sequence));
    answer.setWord(Header::first, static_cast<std::uint32_t>(ended != 0 ? -ECONNRESET : 0));
    write(answer, {});
}

void UsbipServer::servePayloads() {
    for (auto next = pending_.begin(); next != pending_.end();) {
        if (!next->bulk) {
            ++next;
            continue;
        }
        const Bytes data = function_.payload(next->length);
        if (data.empty())
            return;
        complete(next->sequence, 0, static_cast<std::uint32_t>(data.size()), data);
        next = pending_.erase(next);
    }
}

bool UsbipServer::read(std::span<std::uint8_t> bytes) const {
    return bytes.empty() || recv(socket_, bytes.data(), bytes.size(), MSG_WAITALL) ==
                                static_cast<ssize_t>(bytes.size());
}

void UsbipServer::complete(std::uint32_t sequence, std::int32_t status, std::uint32_t length,
                           const Bytes& data) const {
    Header answer;
    answer.setWord(Header::command, kRetSubmit);
    answer.setWord(Header::sequence, sequence);
    answer.setWord(Header::first, static_cast<std::uint32_t>(status));
    answer.setWord(Header::second, length);
    write(answer, data);
}

/// Writes the whole message. A connection that is broken shows at the next `read`.
void UsbipServer::write(const Header& header, const Bytes& data) const {
    Bytes message(header.bytes.begin(), header.bytes.end());
    message.insert(message.end(), data.begin(), data.end());
    for (std::size_t sent = 0; sent < message.size();) {
        const ssize_t count =
            send(socket_, message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<std::size_t>(count);
    }
}

}  // namespace usbip
