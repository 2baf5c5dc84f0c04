// Runs a fuzz target outside libFuzzer: over every file of the corpus folders given on the
// command line, then over a fixed number of pseudo-random mutations of them. This keeps the
// targets building and passing in the ordinary test run; scripts/fuzz does the real fuzzing.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>

#include <cstdint>
#include <cstdio>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    std::vector<QByteArray> inputs;
    for (int i = 1; i < argc; ++i) {
        const QDir dir(QString::fromLocal8Bit(argv[i]));
        for (const QString& name : dir.entryList(QDir::Files)) {
            QFile file(dir.filePath(name));
            if (file.open(QIODevice::ReadOnly))
                inputs.push_back(file.readAll());
        }
    }
    if (inputs.empty()) {
        std::fprintf(stderr, "no corpus files found\n");
        return 1;
    }
    for (const QByteArray& input : inputs)
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                               static_cast<std::size_t>(input.size()));
    QRandomGenerator random(20261121);
    for (int round = 0; round < PELORIN_REPLAY_ROUNDS; ++round) {
        QByteArray input = inputs[random.bounded(static_cast<int>(inputs.size()))];
        const int edits = 1 + random.bounded(8);
        for (int e = 0; e < edits; ++e) {
            const int kind = random.bounded(4);
            const int at = input.isEmpty() ? 0 : random.bounded(static_cast<int>(input.size()));
            if (kind == 0 && !input.isEmpty())
                input[at] = static_cast<char>(random.bounded(256));
            else if (kind == 1)
                input.insert(at, static_cast<char>(random.bounded(256)));
            else if (kind == 2 && !input.isEmpty())
                input.remove(at, 1 + random.bounded(16));
            else
                input.truncate(at);
        }
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                               static_cast<std::size_t>(input.size()));
    }
    std::printf("%zu corpus files and %d mutations ran\n", inputs.size(), PELORIN_REPLAY_ROUNDS);
    return 0;
}
