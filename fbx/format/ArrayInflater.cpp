#include "fbx/format/ArrayInflater.h"

#include <libdeflate.h>

#include <memory>

namespace fbx {

namespace {

struct DecompressorFree {
    void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

}  // namespace

ArrayInflater::~ArrayInflater() {
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Finishing = true;
        m_Next = m_Jobs.size();  // what is left is not needed any more
    }
    m_Wake.notify_all();
    if (m_Thread.joinable())
        m_Thread.join();
}

std::size_t ArrayInflater::Add(const std::uint8_t* source, std::size_t sourceSize,
                               std::size_t size) {
    std::lock_guard<std::mutex> lock(m_Mutex);
    // Jobs are found by number, and the vector may move them: a worker copies what it needs
    // under the mutex and writes its results back under it.
    Job job;
    job.source = source;
    job.sourceSize = sourceSize;
    job.size = size;
    m_Jobs.push_back(std::move(job));
    if (!m_Thread.joinable())
        m_Thread = std::thread([this] { Work(); });
    m_Wake.notify_one();
    return m_Jobs.size() - 1;
}

void ArrayInflater::Decode(Job& job) {
    static thread_local std::unique_ptr<libdeflate_decompressor, DecompressorFree> decompressor;
    if (!decompressor)
        decompressor.reset(libdeflate_alloc_decompressor());
    if (!decompressor) {
        job.outcome = Outcome::NoDecoder;
        return;
    }
    job.bytes.resize(job.size);
    std::size_t actual = 0;
    const libdeflate_result result =
        libdeflate_zlib_decompress(decompressor.get(), job.source, job.sourceSize, job.bytes.data(),
                                   job.bytes.size(), &actual);
    if (result == LIBDEFLATE_INSUFFICIENT_SPACE ||
        (result == LIBDEFLATE_SUCCESS && actual != job.bytes.size()))
        job.outcome = Outcome::WrongSize;
    else if (result != LIBDEFLATE_SUCCESS)
        job.outcome = Outcome::Undecodable;
    else
        job.outcome = Outcome::Decoded;
    if (job.outcome != Outcome::Decoded)
        job.bytes = {};
}

void ArrayInflater::Work() {
    for (;;) {
        Job job;
        std::size_t index = 0;
        {
            std::unique_lock<std::mutex> lock(m_Mutex);
            m_Wake.wait(lock, [this] { return m_Finishing || m_Next < m_Jobs.size(); });
            if (m_Next >= m_Jobs.size())
                return;
            index = m_Next++;
            job.source = m_Jobs[index].source;
            job.sourceSize = m_Jobs[index].sourceSize;
            job.size = m_Jobs[index].size;
        }
        try {
            Decode(job);
        } catch (...) {
            std::lock_guard<std::mutex> lock(m_Mutex);
            if (!m_Thrown)
                m_Thrown = std::current_exception();
            m_Jobs[index].outcome = Outcome::NoDecoder;
            continue;
        }
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Jobs[index].bytes = std::move(job.bytes);
        m_Jobs[index].outcome = job.outcome;
    }
}

void ArrayInflater::Finish() {
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_Finishing = true;
    }
    m_Wake.notify_all();
    // This thread takes a share of what is left, then waits for the other.
    Work();
    if (m_Thread.joinable())
        m_Thread.join();
    if (m_Thrown)
        std::rethrow_exception(m_Thrown);
}

}  // namespace fbx
