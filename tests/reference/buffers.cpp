#include "buffers.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace kfpg::test {

GuardedBlock::GuardedBlock(std::size_t bytes, std::size_t slack) : bytes_(bytes + slack) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t dataPages = (bytes_ + page - 1) / page;
    mapBytes_ = (dataPages + 1) * page;
    map_ = mmap(nullptr, mapBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map_ == MAP_FAILED) throw std::runtime_error("mmap failed");
    auto* guard = static_cast<unsigned char*>(map_) + dataPages * page;
    if (mprotect(guard, page, PROT_NONE) != 0) throw std::runtime_error("mprotect failed");
    data_ = guard - bytes_;
    std::memset(data_, kSentinel, bytes_);
}

GuardedBlock::~GuardedBlock() { munmap(map_, mapBytes_); }

}  // namespace kfpg::test
