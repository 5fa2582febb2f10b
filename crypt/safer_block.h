// SAFER K and SK block cipher on single 8-byte blocks: tables, key schedule,
// block encryption and decryption. Internal to the library; the buffer
// functions build CBC and the ciphertext format on top of it.
#ifndef KORUTL_CRYPT_SAFER_BLOCK_H
#define KORUTL_CRYPT_SAFER_BLOCK_H

#include <cstdint>

namespace korutl::safer {

inline constexpr int kMaxRounds = 13;
inline constexpr int kBlockSize = 8;
// One count byte, then 2r + 1 subkeys of 8 bytes for at most 13 rounds.
inline constexpr int kScheduleSize = 1 + kBlockSize * (2 * kMaxRounds + 1);

using Block = uint8_t[kBlockSize];
using Schedule = uint8_t[kScheduleSize];

// Builds the schedule from key A (rotated into Ka) and key B (Kb, also the
// first subkey). More than 13 rounds are cut to 13.
void expand_key(const uint8_t key_a[kBlockSize], const uint8_t key_b[kBlockSize], int rounds,
                bool strengthened, Schedule schedule);

// Encrypt or decrypt one block in place with a schedule from expand_key.
void encrypt_block(uint8_t block[kBlockSize], const Schedule schedule);
void decrypt_block(uint8_t block[kBlockSize], const Schedule schedule);

}  // namespace korutl::safer

#endif
