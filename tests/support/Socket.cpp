#include "support/Socket.h"

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <winsock2.h>

#include <algorithm>

LocalConnection::LocalConnection(int port) {
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  handle = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<u_short>(port));
  if (connect(handle, reinterpret_cast<const sockaddr*>(&address), sizeof(address)))
    ADD_FAILURE() << "cannot connect to port " << port << ", error " << WSAGetLastError();
}

LocalConnection::~LocalConnection() {
  closesocket(handle);
  WSACleanup();
}

void LocalConnection::Send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const int count = send(handle, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
    if (count < 0) {
      ADD_FAILURE() << "cannot send, error " << WSAGetLastError();
      return;
    }
    sent += count;
  }
}

std::string LocalConnection::Receive(std::size_t count) {
  std::string bytes;
  char block[65536];
  while (bytes.size() < count) {
    const int received = recv(handle, block, static_cast<int>(std::min(sizeof(block), count - bytes.size())), 0);
    isBroken = received < 0;
    if (received <= 0)
      break;
    bytes.append(block, received);
  }
  return bytes;
}

bool LocalConnection::IsReset() {
  return isBroken || send(handle, "", 1, 0) < 0;
}
