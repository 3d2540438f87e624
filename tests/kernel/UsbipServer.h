#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <span>
#include <thread>
#include <vector>

namespace usbip {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

/// What asks on endpoint 0 (USB 2.0, 9.3).
struct Setup {
    std::uint8_t bmRequestType = 0;
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::uint16_t wLength = 0;
};

/// How a request on endpoint 0 ends.
struct ControlReply {
    enum class End {
        answered,
        stalled,
        unanswered,  ///< never ends by itself
        gone,        ///< the device leaves the bus
    };
    End end = End::answered;
    Bytes data = {};
};

/// A device with one bulk endpoint, of which the host reads. Called on the server's thread only.
class UsbFunction {
  public:
    virtual ~UsbFunction() = default;

    virtual ControlReply control(const Setup& setup, std::span<const std::uint8_t> data) = 0;

    /// The next bytes of the bulk endpoint, at most `room`; none before `due`.
    virtual Bytes payload(std::size_t room) = 0;
    virtual Clock::time_point due() const = 0;
};

/// The device's side of a USB/IP connection, on a thread of its own.
class UsbipServer {
  public:
    /// Serves `function`, which outlives the server, on the connected `socket`, which it owns.
    UsbipServer(int socket, UsbFunction& function);
    UsbipServer(const UsbipServer&) = delete;
    UsbipServer& operator=(const UsbipServer&) = delete;
    /// Breaks the connection: the device is pulled out.
    ~UsbipServer();

  private:
    struct Transfer {
        std::uint32_t sequence = 0;
        std::uint32_t length = 0;
        bool bulk = false;
    };
    class Header;

    void serve();
    void waitForWork() const;
    bool receive();
    bool submit(const Header& command);
    void unlink(const Header& command);
    void servePayloads();
    bool read(std::span<std::uint8_t> bytes) const;
    void complete(std::uint32_t sequence, std::int32_t status, std::uint32_t length,
                  const Bytes& data) const;
    void write(const Header& header, const Bytes& data) const;

    const int socket_;
    UsbFunction& function_;
    std::deque<Transfer> pending_;  // what has not ended, the oldest first
    std::thread thread_;            // last: it uses all of the above
};

}  // namespace usbip
