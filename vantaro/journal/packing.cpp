#include "vantaro/journal/packing.h"

#include "host/api/exceptions.h"

#include <zstd.h>

#include <algorithm>
#include <bit>
#include <memory>

namespace vantaro::core {

namespace {

constexpr char plain = 0;
constexpr char compressed = 1;
/// What is shorter stays as it is: a frame takes about as much.
constexpr std::size_t worthwhile = 64;
constexpr int fast_level = 1;
/// More than what the parts of a file that change take, so that a damaged size does not take all memory.
constexpr std::size_t most = std::size_t{2} << 30;

struct Free {
    void operator()(ZSTD_CCtx* context) const { ::ZSTD_freeCCtx(context); }
    void operator()(ZSTD_DCtx* context) const { ::ZSTD_freeDCtx(context); }
};

/// The window that holds both, as the power of two that Zstandard takes.
int window(std::string_view bytes, std::string_view reference) {
    const ZSTD_bounds bounds = ::ZSTD_cParam_getBounds(ZSTD_c_windowLog);
    return std::clamp(static_cast<int>(std::bit_width(bytes.size() + reference.size())), bounds.lowerBound,
                      bounds.upperBound);
}

/// Empty when it did not work.
std::string compress(std::string_view bytes, std::string_view reference) {
    thread_local const std::unique_ptr<ZSTD_CCtx, Free> context(::ZSTD_createCCtx());
    std::string result(1 + ::ZSTD_compressBound(bytes.size()), compressed);
    ::ZSTD_CCtx_reset(context.get(), ZSTD_reset_session_and_parameters);
    ::ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, fast_level);
    ::ZSTD_CCtx_setParameter(context.get(), ZSTD_c_windowLog, window(bytes, reference));
    ::ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1); // tells a wrong reference
    ::ZSTD_CCtx_refPrefix(context.get(), reference.data(), reference.size());
    const std::size_t size =
        ::ZSTD_compress2(context.get(), result.data() + 1, result.size() - 1, bytes.data(), bytes.size());
    if (::ZSTD_isError(size) != 0)
        return {};
    result.resize(1 + size);
    return result;
}

} // namespace

std::string pack(std::string_view bytes, std::string_view reference) {
    if (bytes.size() >= worthwhile) {
        std::string result = compress(bytes, reference);
        if (!result.empty() && result.size() < bytes.size())
            return result;
    }
    return plain + std::string(bytes);
}

std::string unpack(std::string_view packed, std::string_view reference, std::size_t size) {
    if (size > most)
        throw vantaro_io::exception_io_data();
    if (packed.starts_with(plain) && packed.size() == 1 + size)
        return std::string(packed.substr(1));
    if (!packed.starts_with(compressed)
        || ::ZSTD_getFrameContentSize(packed.data() + 1, packed.size() - 1) != size)
        throw vantaro_io::exception_io_data();
    thread_local const std::unique_ptr<ZSTD_DCtx, Free> context(::ZSTD_createDCtx());
    std::string result(size, '\0');
    ::ZSTD_DCtx_reset(context.get(), ZSTD_reset_session_and_parameters);
    ::ZSTD_DCtx_setParameter(context.get(), ZSTD_d_windowLogMax,
                             ::ZSTD_cParam_getBounds(ZSTD_c_windowLog).upperBound);
    ::ZSTD_DCtx_refPrefix(context.get(), reference.data(), reference.size());
    const std::size_t done = ::ZSTD_decompressDCtx(context.get(), result.data(), result.size(),
                                                   packed.data() + 1, packed.size() - 1);
    if (::ZSTD_isError(done) != 0 || done != size)
        throw vantaro_io::exception_io_data();
    return result;
}

} // namespace vantaro::core
