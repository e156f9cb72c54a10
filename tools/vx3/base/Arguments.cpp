#include "base/Arguments.h"

#include "base/NearMiss.h"
#include "base/Quantity.h"
#include "base/ToolError.h"

#include <CLI/CLI.hpp>

namespace VX3::Tool {

Argument& Argument::Required() {
    option_->required();
    return *this;
}

Argument& Argument::OneAtATime() {
    option_->allow_extra_args(false);
    return *this;
}

Argument& Argument::OneOf(const std::vector<std::string>& values) {
    option_->transform(CLI::IsMember(values, CLI::ignore_case));
    return *this;
}

Argument& Argument::Between(int low, int high) {
    option_->check(CLI::Range(low, high));
    return *this;
}

Argument& Argument::Between(double low, double high) {
    option_->check(CLI::Range(low, high));
    return *this;
}

Argument& Argument::Check(const std::function<std::string(const std::string&)>& check) {
    option_->check(check);
    return *this;
}

Arguments Arguments::Verb(const std::string& name, const std::string& help) {
    return Arguments(app_->add_subcommand(name, help));
}

bool Arguments::Chosen() const {
    return app_->parsed();
}

std::string Arguments::Help(const std::string& verb) const {
    if (verb.empty())
        return app_->help();
    std::vector<std::string> names;
    for (const CLI::App* known : app_->get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(known->get_name());
    const std::string* name = FindName(names, verb);
    if (name == nullptr)
        throw ToolError("there is no verb \"" + verb + "\"" + DidYouMean(verb, names));
    return app_->get_subcommand(*name)->help(app_->get_name());
}

Argument Arguments::Add(const std::string& name, std::string& value, const std::string& help) {
    return Argument(app_->add_option(name, value, help));
}

Argument Arguments::Add(const std::string& name, std::vector<std::string>& values, const std::string& help) {
    return Argument(app_->add_option(name, values, help));
}

Argument Arguments::Add(const std::string& name, unsigned int& value, const std::string& help) {
    return Argument(app_->add_option(name, value, help));
}

Argument Arguments::Add(const std::string& name, std::uint64_t& value, const std::string& help) {
    return Argument(app_->add_option(name, value, help));
}

Argument Arguments::Add(const std::string& name, double& value, const std::string& help) {
    return Argument(app_->add_option(name, value, help));
}

Argument Arguments::AddSeconds(const std::string& name, double& seconds, const std::string& help, double low,
                               double high) {
    const auto parse = [name, &seconds, low, high](const std::string& text) {
        try {
            seconds = ParseQuantity(text, "s");
        } catch (const ToolError& error) {
            throw CLI::ValidationError(name, error.what());
        }
        if (seconds < low || seconds > high)
            throw CLI::ValidationError(name, text + " is out of range");
    };
    return Argument(app_->add_option_function<std::string>(name, parse, help)->type_name("TIME"));
}

void Arguments::Flag(const std::string& name, bool& value, const std::string& help) {
    app_->add_flag(name, value, help);
}

} // namespace VX3::Tool
