#include "services/port_probe.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace qb {
namespace {

constexpr int kPatience = 500;  // milliseconds; a service of this machine answers at once

struct Addresses {
    addrinfo *first = nullptr;

    Addresses() = default;
    Addresses(const Addresses &) = delete;
    Addresses &operator=(const Addresses &) = delete;
    ~Addresses()
    {
        if (first) freeaddrinfo(first);
    }
};

struct Socket {
    int descriptor;

    explicit Socket(const addrinfo *address)
        : descriptor(socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol))
    {
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    ~Socket()
    {
        if (descriptor >= 0) close(descriptor);
    }
};

bool resolve(CallContext *ctx, int32_t port, Addresses &addresses)
{
    char service[sizeof "65535"];
    snprintf(service, sizeof service, "%u", static_cast<unsigned>(port) & 0xFFFF);
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    errno = 0;
    const int rc = getaddrinfo("localhost", service, &hints, &addresses.first);
    if (rc == EAI_MEMORY || (rc != 0 && errno == ENOMEM)) ctx->short_of_memory = true;
    return rc == 0;
}

bool connects(int descriptor, const addrinfo *address)
{
    if (connect(descriptor, address->ai_addr, address->ai_addrlen) == 0) return true;
    if (errno != EINPROGRESS) return false;
    pollfd wait{descriptor, POLLOUT, 0};
    int ready;
    do ready = poll(&wait, 1, kPatience);
    while (ready < 0 && errno == EINTR);
    int error = 0;
    socklen_t size = sizeof error;
    return ready == 1 && getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

}  // namespace

int32_t probe_local_port(CallContext *ctx, int32_t port)
{
    Addresses addresses;
    if (!resolve(ctx, port, addresses)) return kNoLocalHost;
    int32_t result = kNoSocket;
    for (const addrinfo *address = addresses.first; address; address = address->ai_next) {
        const Socket socket(address);
        if (socket.descriptor < 0) continue;  // a family that this machine does not have
        if (connects(socket.descriptor, address)) return kPortTaken;
        result = kPortFree;
    }
    return result;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
