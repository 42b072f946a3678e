#include "optional_values.h"

#include "number_text.h"

#include <algorithm>

std::vector<std::string> WithOptionalValues(const std::vector<std::string>& arguments,
                                            const std::vector<OptionalValue>& options) {
    std::vector<std::string> joined;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const auto found = std::find_if(options.begin(), options.end(),
                                        [&](const OptionalValue& option) { return arguments[i] == option.option; });
        if (found == options.end())
            joined.push_back(arguments[i]);
        else if (i + 1 < arguments.size() && NumberOf(arguments[i + 1]))
            joined.push_back(arguments[i] + "=" + arguments[i + 1]), ++i;
        else
            joined.push_back(arguments[i] + "=" + found->value);
    }
    return joined;
}
