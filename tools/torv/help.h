#pragma once

#include <CLI/CLI.hpp>

#include <string>

/// What stands for an option's value in help and manual: "FILE", "en|ja" of a fixed list; empty for a flag.
std::string ValueNameOf(const CLI::Option& option);

/// An option's description, with the bounds of its value and the one that holds without it.
std::string DescriptionOf(const CLI::Option& option);

/// Line ends between words, so that no line has more than so many columns but of a longer word.
std::string Wrapped(const std::string& text, size_t columns);

/// Help that fits so many columns.
class HelpFormatter : public CLI::Formatter {
public:
    explicit HelpFormatter(size_t columns);
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_footer(const CLI::App* app) const override;

private:
    const size_t m_columns;
};
