// Decoding time of the 1000 x 1000 pictures, with the plain and with the vector routines. How the decoder
// stands against another one is measured by compare.py, beside this file.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "media/jpeg/jpeg.h"

namespace {

std::filesystem::path SharedDir() {
    const char* dir = std::getenv("WALLSLATE_SHARED_DIR");
    return dir ? std::filesystem::path(dir)
               : std::filesystem::path(WALLSLATE_SOURCE_DIR).parent_path() / "shared";
}

void Decode(benchmark::State& state, const std::string& name, const jpeg::Kernels* kernels) {
    std::ifstream file(SharedDir() / "video" / "speed" / name, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty() || !kernels) {
        state.SkipWithError(bytes.empty() ? "picture not found" : "no vector routines on this processor");
        return;
    }
    CJpeg decoder;
    decoder.SetKernels(*kernels);
    for (auto _ : state) {
        uint8_t* pixels = decoder.LoadJpeg(reinterpret_cast<const uint8_t*>(bytes.data()),
                                           static_cast<uint32_t>(bytes.size()));
        benchmark::DoNotOptimize(pixels);
        std::free(pixels);
    }
}

} // namespace

int main(int argc, char** argv) {
    for (const std::string kind : {"grain", "smooth"}) {
        const std::string name = "speed_1000x1000_420_q90_" + kind + ".jpg";
        benchmark::RegisterBenchmark((kind + "/plain").c_str(), Decode, name, &jpeg::PlainKernels())
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((kind + "/vector").c_str(), Decode, name, jpeg::VectorKernels())
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
