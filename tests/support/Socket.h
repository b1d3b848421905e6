#pragma once

#include <cstdint>
#include <string>

// A plain TCP connection to a port of this machine, closed with the object. A connection that cannot be made, or that does
// not take the bytes, is a failure of the test.
class LocalConnection {
 public:
  explicit LocalConnection(int port);
  ~LocalConnection();
  LocalConnection(const LocalConnection&) = delete;
  LocalConnection& operator=(const LocalConnection&) = delete;

  void Send(const std::string& bytes);

  // What arrives until `count` bytes are there or the connection ends.
  std::string Receive(std::size_t count);
  std::string ReceiveAll() { return Receive(SIZE_MAX); }

  // Whether the other side reset the connection, asked for after its end. Wine may report a reset as an orderly end to who
  // waits for bytes; a byte that is no longer taken tells the two apart.
  bool IsReset();

 private:
  std::uintptr_t handle;
  bool isBroken = false;  // ended with an error
};
