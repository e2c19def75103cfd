/* oxa streams: random-number streams over a registry of basic generators.
 * C11 and C++20.
 *
 * A stream is one heap block (aligned to 128 bytes) that starts with the
 * header StreamState and continues with the generator's own state. Callers
 * hold it through a handle (StreamState*), create it with _vslNewStreamEx and
 * release it with _vslDeleteStream. Every operation returns a status:
 * 0 on success, a negative code below on failure. */
#ifndef OXA_STREAMS_H
#define OXA_STREAMS_H

#include "oxa/types.h"

OXA_EXTERN_C_BEGIN

/* Status codes of streams and generators (the common ones are in oxa/types.h). */
enum {
  VSL_ERROR_BAD_INIT_METHOD = -2,
  VSL_RNG_ERROR_NULL_ENTRY_POINT = -5,
  VSL_RNG_ERROR_BAD_BRNG = -1000,
  VSL_RNG_ERROR_NO_LEAPFROG = -1002,
  VSL_RNG_ERROR_NO_SKIPAHEAD = -1003,
  VSL_RNG_ERROR_BAD_STATE_BYTES = -1008,
  VSL_RNG_ERROR_BAD_WORD_BYTES = -1009,
  VSL_RNG_ERROR_BAD_SEED_COUNT = -1010,
  VSL_RNG_ERROR_BAD_BIT_COUNT = -1011,
  VSL_RNG_ERROR_BAD_NSTREAMS = -1013,
  VSL_RNG_ERROR_NO_UNIFORMBITS = -1014,
  VSL_RNG_ERROR_NO_AES = -1140,
  VSL_RNG_ERROR_RO_ENTRY_NOT_FOUND = -3000,
  VSL_RNG_ERROR_RO_TABLE_FULL = -3001
};

/* Status codes of stream saving and loading and of the hardware generators. */
enum {
  VSL_RNG_ERROR_FILE_CLOSE = -1100,
  VSL_RNG_ERROR_FILE_OPEN = -1101,
  VSL_RNG_ERROR_FILE_WRITE = -1102,
  VSL_RNG_ERROR_FILE_READ = -1103,
  VSL_RNG_ERROR_BAD_IMAGE = -1110,
  VSL_RNG_ERROR_BAD_IMAGE_VERSION = -1111,
  VSL_RNG_ERROR_NO_RDRAND = -1130,
  VSL_RNG_ERROR_TRNG_FAILED = -1131
};

/* Status codes of the abstract generators. */
enum {
  VSL_RNG_ERROR_ABSTRACT_CALLBACK = -1120, /* the call-back refilled nothing, or too much */
  VSL_RNG_ERROR_ABSTRACT_NO_SAVE = -1121   /* an abstract stream cannot be saved */
};

/* Basic generator ids (registry form). WH set s is OXA_BRNG_WH + s (s < 273),
 * MT2203 set s is OXA_BRNG_MT2203 + s (s < 6024). Legacy ids 0..278 name the
 * first rows directly (0 MCG31M1, 1 R250, 2 MRG32K3A, 3 MCG59, 4..276 WH sets
 * 0..272, 277 SOBOL, 278 NIEDERR). */
enum {
  OXA_BRNG_MCG31M1 = 0x100000,
  OXA_BRNG_R250 = 0x200000,
  OXA_BRNG_MRG32K3A = 0x300000,
  OXA_BRNG_MCG59 = 0x400000,
  OXA_BRNG_WH = 0x500000,
  OXA_BRNG_SOBOL = 0x600000,
  OXA_BRNG_NIEDERR = 0x700000,
  OXA_BRNG_MT19937 = 0x800000,
  OXA_BRNG_MT2203 = 0x900000,
  OXA_BRNG_IABSTRACT = 0xA00000,
  OXA_BRNG_DABSTRACT = 0xB00000,
  OXA_BRNG_SABSTRACT = 0xC00000,
  OXA_BRNG_SFMT19937 = 0xD00000,
  OXA_BRNG_NONDETERM = 0xE00000,
  OXA_BRNG_ARS5 = 0xF00000,
  OXA_BRNG_PHILOX4X32X10 = 0x1000000
};

/* Method codes of a generator's InitStream. */
enum {
  OXA_INIT_SEED = 0,      /* n seed words at params */
  OXA_INIT_LEAPFROG = 1,  /* n = number of streams, params -> 32-bit index k */
  OXA_INIT_SKIPAHEAD = 2  /* n = 2, params -> 64-bit unsigned skip count */
};

/* One node of a stream's chunk list: a side buffer hung on the stream. A key
 * of two zero words means the data is private to the chunk; otherwise the
 * data may belong to the shared read-only data table. */
typedef struct StreamChunk {
  uint32_t id;
  uint32_t size;
  void* data;
  struct StreamChunk* next;
  uint64_t key[2]; /* low, high */
} StreamChunk;

/* Header of every stream block; the generator's state follows it. */
typedef struct StreamState {
  int32_t brng;        /* generator id exactly as given at creation */
  uint32_t flag;       /* 1 whenever a block is allocated */
  StreamChunk* chunks; /* head of the chunk list, NULL when empty */
} StreamState;

/* One entry of the process-wide shared read-only data table. */
typedef struct GlobRODataTableEntry {
  uint64_t key[2];
  uint32_t refs;
  void* data;
} GlobRODataTableEntry;

/* The four entry points of a basic generator. */
typedef int32_t (*oxa_brng_init_fn)(int32_t method, StreamState* stream, int32_t n,
                                    const uint32_t params[]);
typedef int32_t (*oxa_brng_single_fn)(StreamState* stream, int32_t n, float r[], float a,
                                      float b);
typedef int32_t (*oxa_brng_double_fn)(StreamState* stream, int32_t n, double r[], double a,
                                      double b);
typedef int32_t (*oxa_brng_bits_fn)(StreamState* stream, int32_t n, uint32_t r[]);

/* A registry row: what a generator needs and gives, and its entry points. */
typedef struct BrngProperties {
  int32_t StateBytes; /* stream block size, header included */
  int32_t SeedCount;  /* seed words consumed */
  int32_t HasZero;    /* 1 if an output can be exactly zero */
  int32_t WordBytes;  /* bytes of one GenBits word: 4, 8 or 16 */
  int32_t BitCount;   /* significant random bits in one word */
  oxa_brng_init_fn InitStream;
  oxa_brng_single_fn GenSingle;
  oxa_brng_double_fn GenDouble;
  oxa_brng_bits_fn GenBits;
} BrngProperties;

/* Registry and id decoding. _vslGetBrngBaseOffset decodes an id into a table
 * (legacy or registry) and a row and sub-index within it. */
BrngProperties* _vslGetBrngBaseOffset(int32_t id, int32_t* row, int32_t* sub);
int32_t _vslIsBrngValid(const BrngProperties* table, int32_t row, int32_t sub);
int32_t _vslGetBrngProperties(int32_t id, BrngProperties* properties);
int32_t _vslGetNumRegBrngs(void);
int32_t _vslRegisterBrng(const BrngProperties* properties);

/* Stream life cycle. */
int32_t _vslAllocateStream(StreamState** handle, const BrngProperties* table, int32_t id,
                           int32_t row, int32_t sub);
int32_t _vslNewStreamEx(StreamState** handle, int32_t id, int32_t n, const uint32_t params[]);
int32_t _vslCopyStream(StreamState** handle, const StreamState* source);
int32_t _vslCopyStreamState(StreamState* destination, const StreamState* source);
int32_t _vslDeleteStream(StreamState** handle);
int32_t _vslLeapfrogStream(StreamState* stream, int32_t k, int32_t nstreams);
int32_t _vslSkipAheadStream(StreamState* stream, uint64_t nskip);
int32_t _vslGetStreamStateBrng(const StreamState* stream);
int32_t _vslGetStreamSize(const StreamState* stream);

/* Chunks. */
int32_t _vslAddChunk(StreamState* stream, uint32_t id, const uint64_t key[2], void* data,
                     uint32_t size);
void* _vslSearchChunk(const StreamState* stream, uint32_t id);
int32_t _vslGetNumChunks(const StreamState* stream);
int32_t _vslDeleteChunksById(StreamState* stream, uint32_t id);
int32_t _vslDeleteChunks(StreamState* stream);
int32_t _vslCopyChunks(StreamState* destination, const StreamState* source);

/* Shared read-only data table (128 entries, one spin lock). */
int32_t _vslFindGlobRODataTableEntry(GlobRODataTableEntry** entry, const uint64_t key[2]);
int32_t _vslCreateGlobRODataTableEntry(GlobRODataTableEntry** entry, const uint64_t key[2],
                                       void* data);
int32_t _vslRegisterGlobRODataReference(StreamChunk* holder, const uint64_t key[2]);
int32_t _vslUnregisterGlobRODataReference(const uint64_t key[2]);
int32_t _vslGenerateNewGlobalRODataTableEntryId(uint64_t key[2], uint64_t high);

/* Modular arithmetic used by leapfrog and skip-ahead. */
uint32_t _vsliPowMod(uint32_t a, uint64_t n, uint32_t m);
uint32_t _vsliPowMod2P31M1(uint32_t a, uint64_t n);
uint64_t _vsliPowMod2P59(uint64_t a, uint64_t n);
/* x <- M^n x (mod m) for the 3 x 3 matrix M (row-major, entries below m). */
void _vsliVect3PowMod(uint32_t x[3], const uint32_t matrix[9], uint64_t n, uint32_t m);

/* Generator entry points (see BrngProperties for their meaning). */
int32_t _vslBRngMCG31M1InitStream(int32_t method, StreamState* stream, int32_t n,
                                  const uint32_t params[]);
int32_t _vslsBRngMCG31M1(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngMCG31M1(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngMCG31M1(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngMCG59InitStream(int32_t method, StreamState* stream, int32_t n,
                                const uint32_t params[]);
int32_t _vslsBRngMCG59(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngMCG59(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngMCG59(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngMRG32K3AInitStream(int32_t method, StreamState* stream, int32_t n,
                                   const uint32_t params[]);
int32_t _vslsBRngMRG32K3A(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngMRG32K3A(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngMRG32K3A(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngR250InitStream(int32_t method, StreamState* stream, int32_t n,
                               const uint32_t params[]);
int32_t _vslsBRngR250(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngR250(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngR250(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngWHInitStream(int32_t method, StreamState* stream, int32_t n,
                             const uint32_t params[]);
int32_t _vslsBRngWH(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngWH(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngWH(StreamState* stream, int32_t n, uint32_t r[]);

/* Quasi-random generators: the base-2 Sobol (SOBOL) and Niederreiter (NIEDERR)
 * sequences in Gray-code order with 32-bit resolution. A stream of dimension d
 * hands out the coordinates of consecutive points, point by point; the first
 * point handed out is point 1 (the origin, point 0, is skipped, so no value
 * is zero), and after point 2^32 - 1 the sequence starts again at point 1.
 * Words are the 32-bit coordinates u; reals are a + (b - a) u 2^-32.
 *
 * Seed words (InitStream method 0):
 *   params[0]  dimension d: SOBOL 1..2600, NIEDERR 1..10494 (n = 0: d = 1).
 *   params[1]  q <= d, the number of trailing dimensions the caller defines
 *              (n = 1, or q = 0: every dimension built in).
 *   SOBOL:   params[2 .. 2+q)  the primitive polynomials of dimensions
 *              d-q+1 .. d, bit i the coefficient of x^i (odd; degree s =
 *              bit length - 1 <= 31; the polynomial 1 gives van der Corput);
 *            then, dimension after dimension, the s initial direction numbers
 *              m_1..m_s (each odd, m_k < 2^k). n = 2 + q + sum of s exactly.
 *            Built in: the Joe-Kuo new-joe-kuo-6.21201 direction numbers.
 *   NIEDERR: params[2 .. 2+q)  irreducible polynomials over GF(2) (same bit
 *              form, degree 1..31) of dimensions d-q+1 .. d; n = 2 + q.
 *            Built in: the irreducible polynomials in order of degree, then value.
 *   Inconsistent seed words give VSL_ERROR_BAD_ARGUMENT.
 * Leapfrog only with nstreams = 2147483647 and k < d: the stream then hands out
 * coordinate k of each point, from the point holding its next value.
 * Skip-ahead by nskip >= 1 values, while the point number stays below 2^32
 * (else VSL_RNG_ERROR_NO_SKIPAHEAD). */
int32_t _vslBRngSOBOLInitStream(int32_t method, StreamState* stream, int32_t n,
                                const uint32_t params[]);
int32_t _vslsBRngSOBOL(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngSOBOL(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngSOBOL(StreamState* stream, int32_t n, uint32_t r[]);
int32_t _vslBRngNIEDERRInitStream(int32_t method, StreamState* stream, int32_t n,
                                  const uint32_t params[]);
int32_t _vslsBRngNIEDERR(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngNIEDERR(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngNIEDERR(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngMT19937InitStream(int32_t method, StreamState* stream, int32_t n,
                                  const uint32_t params[]);
int32_t _vslsBRngMT19937(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngMT19937(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngMT19937(StreamState* stream, int32_t n, uint32_t r[]);

/* SFMT19937: the SIMD-oriented fast Mersenne twister with the 19937-bit
 * parameters. Seeding from n words: n = 1 is the one-word initialisation
 * (the word itself), any other n >= 2 the array initialisation over all n
 * words, n <= 0 the one word 1; both are followed by the period
 * certification. Words are the state's 32-bit words in order after each
 * regeneration; reals are a + (b - a) u 2^-32 on [a, b). Leapfrog -1002;
 * skip-ahead by counts up to 2^30 words (larger counts: -1003). */
int32_t _vslBRngSFMT19937InitStream(int32_t method, StreamState* stream, int32_t n,
                                    const uint32_t params[]);
int32_t _vslsBRngSFMT19937(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngSFMT19937(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngSFMT19937(StreamState* stream, int32_t n, uint32_t r[]);

/* Abstract generators: a stream over a caller-owned buffer of n values and a
 * call-back that refills it; the caller keeps both alive while the stream (or
 * a copy of it) is used. iAbstract holds 32-bit words, dAbstract doubles and
 * sAbstract floats, the reals in [0, 1).
 * Creation: only with the constructors below (_vslNewStreamEx refuses these
 * ids); n <= 0, a null buffer or a null call-back give VSL_ERROR_BAD_ARGUMENT.
 * The buffer is taken as full: generation hands out buffer[0], buffer[1], ...
 * Call-back: int32_t callback(stream, buffer, length, index) is called when
 * the values refilled last are used up; it writes k new values at
 * buffer[index .. index + k) and returns k. index is where the previous
 * refill ended, or 0 once the whole buffer has been used. A return of k <= 0
 * or k > length - index stops the generation call with
 * VSL_RNG_ERROR_ABSTRACT_CALLBACK: the values before the stop are written and
 * the next generation call asks the call-back again.
 * Values: words u give reals a + (b - a) u 2^-32; buffer reals u give
 * a + (b - a) u (computed in double) and words floor(2^32 u), clamped to
 * 0 .. 2^32 - 1. Leapfrog -1002, skip-ahead -1003, saving
 * VSL_RNG_ERROR_ABSTRACT_NO_SAVE; loading an image of such an id gives
 * VSL_RNG_ERROR_BAD_IMAGE. */
typedef int32_t (*oxa_iabstract_callback)(StreamState* stream, uint32_t buffer[], int32_t length,
                                          int32_t index);
typedef int32_t (*oxa_dabstract_callback)(StreamState* stream, double buffer[], int32_t length,
                                          int32_t index);
typedef int32_t (*oxa_sabstract_callback)(StreamState* stream, float buffer[], int32_t length,
                                          int32_t index);
int32_t _vsliNewAbstractStream(StreamState** handle, int32_t n, uint32_t ibuf[],
                               oxa_iabstract_callback callback);
int32_t _vsldNewAbstractStream(StreamState** handle, int32_t n, double dbuf[],
                               oxa_dabstract_callback callback);
int32_t _vslsNewAbstractStream(StreamState** handle, int32_t n, float sbuf[],
                               oxa_sabstract_callback callback);
int32_t _vslBRngiAbstractInitStream(int32_t method, StreamState* stream, int32_t n,
                                    const uint32_t params[]);
int32_t _vslsBRngiAbstract(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngiAbstract(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngiAbstract(StreamState* stream, int32_t n, uint32_t r[]);
int32_t _vslBRngdAbstractInitStream(int32_t method, StreamState* stream, int32_t n,
                                    const uint32_t params[]);
int32_t _vslsBRngdAbstract(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngdAbstract(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngdAbstract(StreamState* stream, int32_t n, uint32_t r[]);
int32_t _vslBRngsAbstractInitStream(int32_t method, StreamState* stream, int32_t n,
                                    const uint32_t params[]);
int32_t _vslsBRngsAbstract(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngsAbstract(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngsAbstract(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngPHILOX4X32X10InitStream(int32_t method, StreamState* stream, int32_t n,
                                        const uint32_t params[]);
int32_t _vslsBRngPHILOX4X32X10(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngPHILOX4X32X10(StreamState* stream, int32_t n, double r[], double a,
                               double b);
int32_t _vsliBRngPHILOX4X32X10(StreamState* stream, int32_t n, uint32_t r[]);

int32_t _vslBRngARS5InitStream(int32_t method, StreamState* stream, int32_t n,
                               const uint32_t params[]);
int32_t _vslsBRngARS5(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngARS5(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngARS5(StreamState* stream, int32_t n, uint32_t r[]);

/* Hardware generator: RDRAND words; non-deterministic, no skip-ahead. */
int32_t _vslBRngTRNGInitStream(int32_t method, StreamState* stream, int32_t n,
                               const uint32_t params[]);
int32_t _vslsBRngTRNG(StreamState* stream, int32_t n, float r[], float a, float b);
int32_t _vsldBRngTRNG(StreamState* stream, int32_t n, double r[], double a, double b);
int32_t _vsliBRngTRNG(StreamState* stream, int32_t n, uint32_t r[]);

/* Processor support of the AES instructions (ARS5) and of RDRAND (TRNG):
 * 1 when present, 0 when not. */
int32_t _vslCPUisAES(void);
int32_t _vslCPUisRDRAND(void);

/* Saving and loading a stream, its generator state and its chunks. The image
 * is 16 header bytes, the generator state and one record per chunk; its size
 * is _vslGetStreamSize(stream). File names of length >= 0 need not be
 * terminated; a negative length means a zero-terminated name. A failed load
 * leaves NULL in the handle. Loading refuses (VSL_RNG_ERROR_BAD_IMAGE) a chunk
 * with a shared key and no data, and chunks of one image that share a key but
 * disagree on size; saving refuses a chunk with a size and no data. */
int32_t _vslSaveStreamF(const StreamState* stream, const char* name, int32_t length);
int32_t _vslLoadStreamF(StreamState** handle, const char* name, int32_t length);
int32_t _vslSaveStreamM(const StreamState* stream, char* memory);
int32_t _vslLoadStreamM(StreamState** handle, const char* memory);

OXA_EXTERN_C_END

#endif /* OXA_STREAMS_H */
