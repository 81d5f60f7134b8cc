// Passwords and tokens as the server keeps them: never as they are.
#pragma once

#include <cstddef>
#include <string>

namespace imsdk::embedded {

// What one password hash costs (argon2id).
struct HashCost {
  unsigned long long passes = 2;
  std::size_t memory = 64 * 1024 * 1024;  // bytes
};

// Prepares the cryptography of the process; false when the system has no randomness to give. Call
// before anything else here; repeated calls are free.
bool InitCredentials();

// Salted and self-describing. Takes tens of milliseconds. Empty when memory has run out.
std::string HashPassword(const std::string& password, const HashCost& cost);
// As slow as hashing.
bool VerifyPassword(const std::string& hash, const std::string& password);

// 256 random bits as text.
std::string NewToken();
// Tokens are random, so that a fast hash keeps them safe.
std::string HashToken(const std::string& token);

}  // namespace imsdk::embedded
