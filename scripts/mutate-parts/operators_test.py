import unittest

import operators
from tokens import Source


def changes(operator, body, head="HRESULT f()"):
    """The bodies that one operator makes of the body of a function."""
    text = f"{head} {{ {body} }}"
    source = Source(text)
    places = [place for place in operators.all_places(source) if place.operator == operator]
    made = [text[:place.begin] + place.after + text[place.end:] for place in places]
    return [each[len(head) + 3:-2] for each in made]


class OperatorsTest(unittest.TestCase):
    def expect(self, operator, body, *expected):
        self.assertEqual(list(expected), changes(operator, body))

    def test_comparisons_move_by_one(self):
        self.expect("boundary", "return a < b && c >= d;", "return a <= b && c >= d;", "return a < b && c > d;")

    def test_a_bracket_of_a_template_is_no_comparison(self):
        self.expect("boundary", "std::vector<int> a(static_cast<DWORD>(b));")

    def test_swaps(self):
        self.expect("equality", "x = a == b;", "x = a != b;")
        self.expect("connective", "x = a && b;", "x = a || b;")
        self.expect("arithmetic", "x = a + b - 1;", "x = a - b - 1;", "x = a + b + 1;")
        self.expect("step", "++x;", "--x;")
        self.expect("bits", "x |= a & b;", "x &= a & b;", "x |= a | b;")
        self.expect("truth", "x = true;", "x = false;")
        self.expect("success", "if (FAILED(hr)) x();", "if (SUCCEEDED(hr)) x();")

    def test_a_reference_and_a_sign_are_no_operators(self):
        self.expect("bits", "const T& a = b; f(&c);")
        self.expect("arithmetic", "x = -1; char* y = *z;")

    def test_conditions_are_negated(self):
        self.expect("negation", "if (a && b) x();", "if (!(a && b)) x();")
        self.expect("negation", "for (int i = 0; i < n; ++i) x();", "for (int i = 0; !(i < n); ++i) x();")
        self.expect("negation", "return f(a ? b : c, d);", "return f(!(a) ? b : c, d);")
        self.expect("negation", "x = g(1, 2) == 3 ? b : c;", "x = !(g(1, 2) == 3) ? b : c;")

    def test_what_success_turns_round_is_not_negated_too(self):
        self.expect("negation", "if (FAILED(hr)) x();")
        self.expect("negation", "if (FAILED(hr) || a) x();", "if (!(FAILED(hr) || a)) x();")

    def test_a_loop_over_all_items_and_one_without_an_end_have_no_condition(self):
        self.expect("negation", "for (const A& a : list) x(); for (;;) y();")

    def test_constants_move_by_one(self):
        self.expect("constant", "x = 10u;", "x = 11u;", "x = 9u;")
        self.expect("constant", "x = 0;", "x = 1;")
        self.expect("constant", "x = 0x10;", "x = 15;", "x = 17;")

    def test_a_pure_function_is_no_constant(self):
        text = "struct A { virtual int f() const = 0; };"
        self.assertEqual([], [place for place in operators.all_places(Source(text)) if place.operator == "constant"])

    def test_results_become_others(self):
        self.expect("result", "return S_OK;", "return E_FAIL;", "return S_FALSE;")
        self.expect("result", "return E_INVALIDARG;", "return E_FAIL;")

    def test_statements_are_deleted(self):
        self.expect("deletion", "a.b(1); return c;", "; return c;")
        self.expect("deletion", "x = 1; *y++ = 2;", "; *y++ = 2;", "x = 1; ;")
        self.expect("deletion", "if (a) b->c(); else d::e<T>(f);", "if (a) ; else d::e<T>(f);", "if (a) b->c(); else ;")
        self.expect("deletion", "while (a) { break; }", "while (a) { ; }")

    def test_declarations_and_last_returns_are_kept(self):
        self.expect("deletion", "DWORD a = 0; const B c(d); T<int> e; return a;")
        self.expect("deletion", "if (a) { return b; }")

    def test_an_early_return_is_deleted(self):
        self.expect("deletion", "if (a) return b; return c;", "if (a) ; return c;")

    def test_the_clauses_of_a_for_are_no_statements(self):
        self.expect("deletion", "for (i = 0; i < n; ++i) { }")

    def test_arguments_become_nothing(self):
        self.expect("argument", "f(a, g(b, 0), HERE, \"t\");", "f(0, g(b, 0), HERE, \"t\");", "f(a, 0, HERE, \"t\");",
                    "f(a, g(0, 0), HERE, \"t\");")

    def test_an_argument_that_is_nothing_already_stays(self):
        self.expect("argument", "f(0, nullptr, CP_ACP);")

    def test_conditions_are_no_arguments(self):
        self.expect("argument", "if (a) return;")

    def test_texts_are_emptied_or_changed_but_for_escapes_and_conversions(self):
        self.expect("text", 'x = "\\r%8sA";', 'x = "";', 'x = "\\r%8s#";')

    def test_characters_are_changed(self):
        self.expect("character", "x = L'a';", "x = L'\\1';")

    def test_what_cannot_be_observed_is_left_alone(self):
        text = "static_assert(sizeof(A) == 4, \"text\");\n// a == b\n#if A == 1\n#endif"
        self.assertEqual([], list(operators.all_places(Source(text))))


if __name__ == "__main__":
    unittest.main()
