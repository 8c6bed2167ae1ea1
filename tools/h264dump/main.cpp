// h264dump FILE.264 [--yuv OUT] [--log]: runs a byte stream through the decoder as the video thread does, one
// NAL unit at a time, and prints for each picture its number, size and MD5. Ends with 0 whenever the end of
// the data was reached, also of a damaged file.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "foundation/log.h"
#include "md5.h"
#include "media/h264/decoder.h"

namespace {

constexpr const char* Usage = "usage: h264dump FILE.264 [--yuv OUT] [--log]\n";

struct Options {
    std::string file;
    std::string yuv;      // empty: none
    bool log = false;     // print the decoder's lines on standard error
    bool quiet = false;   // no line for each picture, no checksum; for timing
    unsigned loops = 1;   // how often the file is fed; for timing
    std::string routines; // "plain", "sse2", "avx2"; empty: the best
    unsigned long pool = h264::PoolBytes;
};

bool ParseOptions(int argc, char** argv, Options* options) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool hasValue = i + 1 < argc;
        if (argument == "--log")
            options->log = true;
        else if (argument == "--quiet")
            options->quiet = true;
        else if (argument == "--yuv" && hasValue)
            options->yuv = argv[++i];
        else if (argument == "--loops" && hasValue)
            options->loops = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
        else if (argument == "--routines" && hasValue)
            options->routines = argv[++i];
        else if (argument == "--pool" && hasValue)
            options->pool = std::strtoul(argv[++i], nullptr, 10);
        else if (options->file.empty() && !argument.starts_with("--"))
            options->file = argument;
        else
            return false;
    }
    return !options->file.empty();
}

void PrintLog(const char* line) {
    std::fprintf(stderr, "%s\n", line);
}

// Length of the NAL unit at the front, its start code included: up to the next start code.
std::size_t UnitLength(const unsigned char* data, std::size_t size) {
    bool content = false; // behind the unit's own start code
    for (std::size_t i = 0; i + 3 <= size; ++i) {
        const bool startCode = data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1;
        if (!startCode)
            continue;
        if (content) {
            while (i > 0 && data[i - 1] == 0)
                --i;
            return i;
        }
        content = true;
        i += 2;
    }
    return size;
}

class Dump {
public:
    explicit Dump(const Options& o) : options(o), pool(new (std::align_val_t{16}) unsigned char[o.pool]) {
        decoder.InitDecoder(pool.get(), static_cast<h264::u32>(options.pool));
        if (!options.yuv.empty())
            yuv.open(options.yuv, std::ios::binary);
        ChooseRoutines();
    }

    bool Good() const { return options.yuv.empty() || yuv.good(); }

    void Run(const std::vector<unsigned char>& stream) {
        std::vector<unsigned char> work = stream; // decoding changes the data
        for (std::size_t at = 0; at < work.size();) {
            const std::size_t length = UnitLength(work.data() + at, work.size() - at);
            Feed(work.data() + at, length);
            at += length;
        }
    }

    void PrintTotals() const {
        std::printf("pictures %lu errors %lu concealed %lu\n", pictures,
                    static_cast<unsigned long>(decoder.DroppedUnits()), concealed);
    }

private:
    struct PoolDeleter {
        void operator()(unsigned char* memory) const { operator delete[](memory, std::align_val_t{16}); }
    };

    void ChooseRoutines() {
        const h264::SampleRoutines* chosen = nullptr;
        if (options.routines == "plain")
            chosen = &h264::PlainRoutines();
        else if (options.routines == "sse2")
            chosen = h264::Sse2Routines();
        else if (options.routines == "avx2")
            chosen = h264::Avx2Routines();
        if (chosen != nullptr)
            decoder.UseRoutines(*chosen);
    }

    // A unit may end one picture and belong to the next: the rest is asked for with a null buffer.
    void Feed(unsigned char* unit, std::size_t length) {
        using enum h264::AccessUnitResult;
        auto result = decoder.DecodeAccessUnit(unit, static_cast<h264::u32>(length));
        while (true) {
            if (result == Picture)
                Show(decoder.OutputPicture());
            if (!decoder.HasPendingInput())
                return;
            result = decoder.DecodeAccessUnit(nullptr, 0);
        }
    }

    void Show(const h264::DecodedPicture& picture) {
        const std::size_t bytes = std::size_t{picture.width} * picture.height * 3 / 2;
        if (!options.quiet)
            std::printf("%lu %ux%u %s\n", pictures, picture.width, picture.height,
                        Md5::Of(picture.planes, bytes).c_str());
        if (yuv.is_open())
            yuv.write(reinterpret_cast<const char*>(picture.planes), static_cast<std::streamsize>(bytes));
        ++pictures;
        concealed += picture.numErrMbs;
    }

    const Options& options;
    std::unique_ptr<unsigned char[], PoolDeleter> pool;
    h264::Decoder decoder;
    std::ofstream yuv;
    unsigned long pictures = 0;
    unsigned long concealed = 0; // macroblocks
};

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!ParseOptions(argc, argv, &options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    std::ifstream file(options.file, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "h264dump: cannot open %s\n", options.file.c_str());
        return 1;
    }
    const std::vector<unsigned char> stream((std::istreambuf_iterator<char>(file)),
                                            std::istreambuf_iterator<char>());
    if (options.log) {
        SetLogSlot(PrintLog);
        SetLogLevel(LogTrace);
    }
    Dump dump(options);
    if (!dump.Good()) {
        std::fprintf(stderr, "h264dump: cannot write %s\n", options.yuv.c_str());
        return 1;
    }
    for (unsigned i = 0; i < options.loops; ++i)
        dump.Run(stream);
    dump.PrintTotals();
    return 0;
}
