// What node maps cost: loading against the XML parser's bare pass over the same bytes, and single operations.
// VX3_BENCH_XML names a further description to load, such as one fetched from a camera.
// Usage: bench_genapi [--smoke] [Google Benchmark's options]
#include "platform/genapi/formula/Formula.h"
#include "support/GeneratedDescription.h"
#include "support/TestNodeMap.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <time.h>
#include <vector>

using namespace GenApi_3_2;
using namespace VX3::Test;

namespace {

// A port without a device behind it: what remains is this library's own work.
class NullPort final : public IPort {
public:
    EAccessMode GetAccessMode() const override { return RW; }
    void Read(void*, std::int64_t, std::int64_t) override {}
    void Write(const void*, std::int64_t, std::int64_t) override {}
};

void LoadOnce(const std::string& xml) {
    const CNodeMapFactory factory(ContentType_Xml, xml.data(), xml.size());
    INodeMap* map = factory.CreateNodeMap();
    benchmark::DoNotOptimize(map);
    dynamic_cast<IDestroy*>(map)->Destroy();
}

void ParseOnce(const std::string& xml) {
    pugi::xml_document document;
    benchmark::DoNotOptimize(document.load_buffer(xml.data(), xml.size()));
}

// Of this thread's own work, which a busy machine disturbs least.
double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <class Function>
double Seconds(const Function& function) {
    const double start = CpuSeconds();
    function();
    return CpuSeconds() - start;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Loads and bare parses in turn, so that both see the same machine.
void BM_Load(benchmark::State& state, const std::string& xml) {
    std::vector<double> loads, parses, ratios;
    for (auto _ : state) {
        parses.push_back(Seconds([&] { ParseOnce(xml); }));
        loads.push_back(Seconds([&] { LoadOnce(xml); }));
        ratios.push_back(loads.back() / parses.back());
        state.SetIterationTime(loads.back());
    }
    state.counters["bytes"] = static_cast<double>(xml.size());
    state.counters["parse_ms"] = 1e3 * Median(parses);
    state.counters["load_ms"] = 1e3 * Median(loads);
    state.counters["times_parse"] = Median(ratios);
}

class Nodes {
public:
    explicit Nodes(const std::string& nodes) : map(nodes, false) { map.map->Connect(&port); }
    NullPort port;
    TestNodeMap map;
};

void BM_CachedInteger(benchmark::State& state) {
    Nodes nodes(WordRegister("Reg", 0) + "<Integer Name=\"Feature\"><pValue>Reg</pValue></Integer>");
    IInteger& feature = nodes.map.Integer("Feature");
    for (auto _ : state)
        benchmark::DoNotOptimize(feature.GetValue());
}
BENCHMARK(BM_CachedInteger);

void BM_UncachedRegister(benchmark::State& state) {
    Nodes nodes(WordRegister("Reg", 0, "<Cachable>NoCache</Cachable>"));
    IInteger& reg = nodes.map.Integer("Reg");
    for (auto _ : state)
        benchmark::DoNotOptimize(reg.GetValue());
}
BENCHMARK(BM_UncachedRegister);

void BM_WriteRegister(benchmark::State& state) {
    Nodes nodes(WordRegister("Reg", 0) + "<Integer Name=\"Feature\"><pValue>Reg</pValue></Integer>");
    IInteger& feature = nodes.map.Integer("Feature");
    std::int64_t value = 0;
    for (auto _ : state)
        feature.SetValue(++value & 0xFFFF);
}
BENCHMARK(BM_WriteRegister);

void BM_FormulaOfTenOperations(benchmark::State& state) {
    const Engine::FormulaScope scope{{"A", "B", "C"}, {}, {}};
    const Engine::IntegerFormula formula("(A + B * 2 - C) * 3 + ((A > B) ? A << 2 : B) - (C & 0xFF) / 2",
                                         scope);
    const std::int64_t values[] = {123, 45, 6};
    for (auto _ : state)
        benchmark::DoNotOptimize(formula.Evaluate(values));
}
BENCHMARK(BM_FormulaOfTenOperations);

void AddLoad(const std::string& name, const std::string& xml) {
    benchmark::RegisterBenchmark(name.c_str(), BM_Load, xml)->UseManualTime()->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    AddLoad("BM_Load/generated3000", GeneratedDescription(3000 / NodesPerGeneratedGroup));
    if (const char* path = std::getenv("VX3_BENCH_XML")) {
        std::ifstream file(path, std::ios::binary);
        const std::string xml{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (xml.empty()) {
            std::fprintf(stderr, "bench_genapi: cannot read %s\n", path);
            return 1;
        }
        AddLoad("BM_Load/file", xml);
    }
    std::string shortRun = "--benchmark_min_time=0.01";
    std::vector<char*> arguments(argv, argv + argc);
    for (char*& argument : arguments)
        if (std::strcmp(argument, "--smoke") == 0)
            argument = shortRun.data();
    benchmark::Initialize(&argc, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(argc, arguments.data()))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
