// The arguments of the program or of one verb. The command-line library behind them is large: one file
// compiles it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace VX3::Tool {

// One argument, for what holds of its value. A handle; the arguments own what it stands for.
class Argument {
public:
    explicit Argument(CLI::Option* option) : option_(option) {}

    Argument& Required();
    // Given several times, each takes one value, not all that follow.
    Argument& OneAtATime();
    // Upper and lower case are the same; the variable gets the spelling listed here.
    Argument& OneOf(const std::vector<std::string>& values);
    Argument& Between(int low, int high);
    Argument& Between(double low, double high);
    // The check answers with what is wrong, or with nothing.
    Argument& Check(const std::function<std::string(const std::string&)>& check);

private:
    CLI::Option* option_;
};

// A handle too: the program's CLI::App owns everything and outlives it. The variables are set by its parse.
class Arguments {
public:
    explicit Arguments(CLI::App* app) : app_(app) {}

    Arguments Verb(const std::string& name, const std::string& help);
    // True once the parse has met this verb.
    bool Chosen() const;
    // What --help shows: of the program, or of the verb of that name. Throws ToolError when there is none.
    std::string Help(const std::string& verb) const;

    Argument Add(const std::string& name, std::string& value, const std::string& help);
    Argument Add(const std::string& name, std::vector<std::string>& values, const std::string& help);
    Argument Add(const std::string& name, unsigned int& value, const std::string& help);
    Argument Add(const std::string& name, std::uint64_t& value, const std::string& help);
    Argument Add(const std::string& name, double& value, const std::string& help);
    // Seconds, or a text with a unit of time ("500ms"), from `low` to `high` seconds.
    Argument AddSeconds(const std::string& name, double& seconds, const std::string& help, double low,
                        double high);
    void Flag(const std::string& name, bool& value, const std::string& help);

private:
    CLI::App* app_;
};

} // namespace VX3::Tool
