import unittest

from tokens import Source, tokenize


def words(text):
    return [token.text for token in tokenize(text)]


class TokensTest(unittest.TestCase):
    def test_comments_are_no_tokens(self):
        self.assertEqual(["a", "b"], words("a // x == y\n/* if (a)\n */ b"))

    def test_directives_are_no_tokens_with_the_lines_that_continue_them(self):
        self.assertEqual(["a", "b", "#"], words("#include <a>\na\n  # define X(y) \\\n    y + 1\nb #"))

    def test_a_text_is_one_token_whatever_it_holds(self):
        self.assertEqual(['"a // \\" b"', "+", "L'\\''", 'R"x(a)" b)x"'], words('"a // \\" b" + L\'\\\'\' R"x(a)" b)x"'))

    def test_numbers_keep_their_suffixes_and_marks(self):
        self.assertEqual(["0x1Fu", "10'000ULL", "1e-3", "-", "2"], words("0x1Fu 10'000ULL 1e-3 -2"))

    def test_the_longest_sign_is_taken(self):
        self.assertEqual(["a", "<<=", "b", "->", "c", "++", "==", "&&", "..."], words("a<<=b->c++==&&..."))

    def test_a_token_knows_where_it_stands(self):
        token = tokenize("  one")[0]
        self.assertEqual((2, 5), (token.begin, token.end))


class FunctionsTest(unittest.TestCase):
    def names(self, text):
        source = Source(text)
        heads = [(source.tokens[each.first].begin, source.tokens[each.body].begin) for each in source.functions]
        return [text[begin:end].strip() for begin, end in heads]

    def test_functions_are_found_in_namespaces_and_classes(self):
        text = "namespace {\nint a() { return 1; }\nclass B : public C {\n public:\n  int b() const { return 2; }\n};\n}"
        self.assertEqual(["int a()", "int b() const"], self.names(text))

    def test_initial_values_are_no_functions(self):
        text = "constexpr int kA[] = {1, g(2)};\nstruct S { int a = 0; };\nS s{1};\nvoid f() {}"
        self.assertEqual(["void f()"], self.names(text))

    def test_operators_and_constructors_are_functions(self):
        text = "A& A::operator=(A&& other) { x = 1; }\nA::A(int b) : x(b), y(2) {}\nint c(int d = 1) { return d; }"
        self.assertEqual(["A& A::operator=(A&& other)", "A::A(int b) : x(b), y(2)"], self.names(text)[:2])

    def test_lines_reach_from_the_head_to_the_end_of_the_body(self):
        source = Source("int a;\nint\nf() {\n  return 1;\n}\n")
        self.assertEqual([(2, 5)], [source.lines_of(each) for each in source.functions])


if __name__ == "__main__":
    unittest.main()
