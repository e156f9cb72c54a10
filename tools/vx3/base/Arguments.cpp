#include "base/Arguments.h"

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
    option_->check(CLI::IsMember(values));
    return *this;
}

Argument& Argument::OneOfAnyCase(const std::vector<std::string>& values) {
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

void Arguments::Flag(const std::string& name, bool& value, const std::string& help) {
    app_->add_flag(name, value, help);
}

} // namespace VX3::Tool
