// The parts of the search that searching reaches seldom, held against what they are to find.

void expect_same(const char* part, size_t found, size_t expected, const std::string& first,
                 const std::string& second) {
    if (found == expected) return;
    if (!failed)
        std::printf("%s: %zu instead of %zu of %s and %s\n", part, found, expected, first.c_str(),
                    second.c_str());
    failed = true;
}

const uint8_t* bytes_of(const std::string& text) { return reinterpret_cast<const uint8_t*>(text.data()); }

// The first n bytes of a text, which goes on behind them.
void compare_two_way(const std::string& text, size_t n, const std::string& needle) {
    const size_t expected = std::string_view(text).substr(0, n).find(needle);
    expect_same("linear search", find_two_way(bytes_of(text), n, bytes_of(needle), needle.size()),
                expected == std::string::npos ? kNotFound : expected, text, needle);
}

// All texts of `length` of the first letters, each as long as its number allows.
template <class Use>
void for_texts(size_t length, size_t letters, Use use) {
    std::string text(length, 'a');
    for (;;) {
        use(text);
        size_t i = 0;
        while (i < length && size_t(text[i] - 'a') + 1 == letters) text[i++] = 'a';
        if (i == length) return;
        ++text[i];
    }
}

void compare_all_short(size_t letters, size_t longest_needle, size_t length) {
    for (size_t m = 1; m <= longest_needle; ++m) {
        for_texts(m, letters, [&](const std::string& needle) {
            for_texts(length, letters, [&](const std::string& text) {
                compare_two_way(text, length, needle);
                compare_two_way(text, length - 3, needle);
            });
        });
    }
}

// A word repeated, with a few letters changed.
std::string repetitive(std::mt19937& random, const std::string& word, size_t length, size_t most_changes) {
    std::string text;
    while (text.size() < length) text += word;
    text.resize(length);
    for (size_t i = random() % (most_changes + 1); i > 0; --i) text[random() % length] = 'c';
    return text;
}

void compare_long(std::mt19937& random) {
    std::string word;
    for (size_t i = random() % 24 + 1; i > 0; --i) word += char('a' + random() % 2);
    const std::string needle = repetitive(random, word, random() % 150 + 1, 2);
    std::string text = repetitive(random, word, 400, 8);
    if (random() % 2) text.replace(random() % 200, needle.size(), needle);
    compare_two_way(text, random() % 400, needle);
}

void compare_ranges(std::mt19937& random) {
    const size_t n = random() % (4 * kVectorBytes) + 1;
    const std::string first = repetitive(random, "a", n + 1, 2);
    std::string second = first;
    for (size_t i = random() % 3; i > 0; --i) second[random() % (n + 1)] = 'b';
    size_t front = 0;
    while (front < n && first[front] == second[front]) ++front;
    size_t back = n;
    while (back > 0 && first[back - 1] == second[back - 1]) --back;
    size_t behind = n;
    while (behind > 0 && second[behind - 1] != 'b') --behind;
    expect_same("equal front", equal_front(bytes_of(first), bytes_of(second), n), front, first, second);
    expect_same("last difference", last_difference(bytes_of(first), bytes_of(second), n),
                back > 0 ? back - 1 : kNotFound, first, second);
    expect_same("last byte", last_byte(bytes_of(second), n, 'b'), behind > 0 ? behind - 1 : kNotFound, second,
                "b");
}

void compare_search() {
    compare_all_short(2, 7, 11);
    compare_all_short(3, 4, 7);
    std::mt19937 random(1);
    for (size_t i = 0; i < 40'000; ++i) {
        compare_long(random);
        compare_ranges(random);
    }
}
