// Large compressed arrays of a binary file, decoded beside the parse.
//
// The binary parser hands each large compressed array over as a job and goes on with the
// records after it. The jobs run in file order on a second thread, and on the parser's thread
// too once it has read every record; the parser then puts each decoded array in its place.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "fbx/format/ByteBuffer.h"

namespace fbx {

class ArrayInflater {
public:
    enum class Outcome { Pending, Decoded, WrongSize, Undecodable, NoDecoder };

    // One zlib stream and the bytes it must decode to.
    struct Job {
        const std::uint8_t* source = nullptr;
        std::size_t sourceSize = 0;
        std::size_t size = 0;  // the decoded size the array header promises
        ByteBuffer bytes;      // the decoded bytes once Finish has returned
        Outcome outcome = Outcome::Pending;
    };

    ArrayInflater() = default;
    ArrayInflater(const ArrayInflater&) = delete;
    ArrayInflater& operator=(const ArrayInflater&) = delete;
    ~ArrayInflater();

    // Queues a stream; the source bytes must outlive Finish. Returns the job's number.
    std::size_t Add(const std::uint8_t* source, std::size_t sourceSize, std::size_t size);
    // Decodes what is still queued, waits for the second thread and rethrows what it threw
    // (running out of memory).
    void Finish();
    // Job `index`; its outcome and bytes are final after Finish.
    Job& At(std::size_t index) { return m_Jobs[index]; }

private:
    // Decodes queued jobs until none is left (and, on the second thread, Finish was called).
    void Work();
    static void Decode(Job& job);

    std::mutex m_Mutex;
    std::condition_variable m_Wake;
    std::vector<Job> m_Jobs;  // grows only before Finish; read by index under the mutex
    std::size_t m_Next = 0;   // the first job nobody has taken
    bool m_Finishing = false;
    std::thread m_Thread;
    std::exception_ptr m_Thrown;
};

}  // namespace fbx
