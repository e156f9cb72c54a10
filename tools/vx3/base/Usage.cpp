#include "base/Usage.h"

#include "base/NearMiss.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace VX3::Tool {

namespace {

std::vector<std::string> Verbs(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(verb->get_name());
    return names;
}

std::vector<std::string> OptionsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options([](const CLI::Option*) { return true; }))
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

// The first argument that is neither an option nor an option's value; empty when there is none.
std::string FirstWord(const CLI::App& app, int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        std::string word = argv[i];
        if (word.empty() || word.front() != '-')
            return word;
        const CLI::Option* option = app.get_option_no_throw(word);
        if (option != nullptr && option->get_items_expected_max() > 0)
            ++i;
    }
    return {};
}

std::string UnknownOption(const CLI::App& app) {
    for (const std::string& word : app.remaining(true))
        if (word.rfind("--", 0) == 0)
            return word.substr(0, word.find('='));
    return {};
}

} // namespace

std::string UsageWords(const CLI::App& app, const CLI::ParseError& error, int argc, const char* const* argv) {
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    if (chosen.empty()) {
        const std::string word = FirstWord(app, argc, argv);
        if (word.empty())
            return std::string(error.what()) + "; 'vx3 help' lists the verbs";
        const std::string meant = DidYouMean(word, Verbs(app));
        return "there is no verb \"" + word + "\"" + (meant.empty() ? "; 'vx3 help' lists the verbs" : meant);
    }
    std::string text = error.what();
    if (const std::string unknown = UnknownOption(app); !unknown.empty()) {
        std::vector<std::string> names = OptionsOf(app);
        for (const std::string& name : OptionsOf(*chosen.back()))
            names.push_back(name);
        if (const std::string meant = DidYouMean(unknown, names); !meant.empty())
            return text + meant;
    }
    return text + "; see 'vx3 help " + chosen.back()->get_name() + "'";
}

bool WantsJson(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i)
        if (std::string(argv[i]) == "--json")
            return true;
    return false;
}

} // namespace VX3::Tool
