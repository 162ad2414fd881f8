#include <host/operation/AlgorithmNode.h>
#include <host/operation/Device.h>
#include <host/operation/OperationRows.h>

namespace host {

namespace {

Chain chainOf(const Call& call)
{
    const auto given = [&call](const char* key) {
        return call.has(key) ? std::optional(call.text(key)) : std::nullopt;
    };
    return Chain::fromTextOrFile(given("chain"), given("chain-file"));
}

std::unique_ptr<Node> grade(const Call& call)
{
    const Chain chain = chainOf(call);
    std::vector<std::string> notes;
    AlgorithmNode::Work work = gradeWork(chain, takesGPU(call, chain, notes));
    work.notes = std::move(notes);
    return std::make_unique<AlgorithmNode>(std::move(work), call.planeSettings());
}

} // namespace

std::vector<Operation> colourOperations()
{
    Parameter file = text("--chain", "read the chain from a JSON file instead", "FILE");
    file.id = "chain-file";
    return {{"grade", "Apply a chain of functions to an image or a sequence",
             "Examples:\n"
             "  kreiluge grade in.exr -o out.exr \"gamma 2.2, add 0.1\"\n"
             "  kreiluge grade in.png -o out.png \"mult 1.1:1:0.9, limit 0 1 @rgb\"\n"
             "  kreiluge grade shot.####.exr -o graded.####.exr --frames 1001-1100 --chain look.json\n"
             "A scope after @ says which of r, g, b and a a function applies to: all without it, alpha too.\n"
             "`kreiluge functions` lists the functions.",
             withPlanes({image("INPUT", "image"),
                         text("CHAIN", "functions with their arguments, separated by commas; \"\" copies"),
                         file, deviceParameter()},
                        true),
             grade}};
}

} // namespace host
