"""The mistakes that scripts/mutants makes, on sample texts."""

import importlib.machinery
import importlib.util
import json
import pathlib
import subprocess
import tempfile
import unittest
from unittest import mock

SCRIPT = str(pathlib.Path(__file__).resolve().parents[2] / "scripts/mutants")


def load():
    """The script as a module."""
    loader = importlib.machinery.SourceFileLoader("mutants", SCRIPT)
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutants", loader))
    loader.exec_module(module)
    return module


mutants = load()


def changed(text, path="scan/A.cpp"):
    """Each mistake in the text: its operator, and the text with it, without double blanks."""
    return [(mutation.operator, " ".join(mutants.mutated(text, mutation).split()))
            for mutation in mutants.mutations(path, text)]


def in_body(text):
    """The mistakes in the body of a function, as they look there."""
    frame = "void f() { %s }"
    return [(operator, new[len("void f() { "):-len(" }")]) for operator, new in changed(frame % text)]


class Cpp(unittest.TestCase):
    """What is made of C++."""

    def test_comparisons_are_turned(self):
        for before, after in (("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"), ("==", "!="),
                              ("!=", "==")):
            self.assertEqual(in_body(f"return a {before} b;"), [("comparison", f"return a {after} b;")])

    def test_and_or_are_exchanged(self):
        self.assertEqual(in_body("return a && b;"), [("and/or", "return a || b;")])
        self.assertEqual(in_body("return a || b;"), [("and/or", "return a && b;")])

    def test_brackets_of_templates_and_references_stay(self):
        self.assertEqual(in_body("const QList<QList<int>> &&a = std::move(b);"), [])
        self.assertEqual(in_body("return static_cast<int>(a) << b->c;"), [])

    def test_constants_are_moved_by_one(self):
        for before, after in (("0", "1"), ("9", "10"), ("0x1f", "0x20"), ("17U", "18U"),
                              ("1'000", "1001"), ("0.25", "0.35")):
            self.assertEqual(in_body(f"return {before};"), [("constant", f"return {after};")])

    def test_sizes_of_arrays_stay(self):
        self.assertEqual(in_body("std::array<char, 16> a;"), [])

    def test_the_mark_of_a_pure_function_stays(self):
        self.assertEqual(changed("class A { virtual void f() const = 0; };"), [])

    def test_strings_are_emptied(self):
        self.assertEqual(in_body('return u"a\\"b";'), [("string", 'return u"";')])
        self.assertEqual(in_body('return R"(a"b)";'), [("string", 'return "";')])
        self.assertEqual(in_body('return "";'), [])

    def test_conditions_are_negated(self):
        self.assertEqual(in_body("if (a(b)) return;")[0], ("condition", "if (!(a(b))) return;"))
        self.assertEqual(in_body("while (a) return;")[0], ("condition", "while (!(a)) return;"))
        self.assertEqual(in_body("if (auto a = b(); a.c()) return;")[0],
                         ("condition", "if (auto a = b(); !(a.c())) return;"))
        self.assertEqual(in_body("if (const auto a = b()) return;")[0],
                         ("condition", "if (const auto a = b(); !(a)) return;"))

    def test_the_values_of_a_conditional_expression_are_exchanged(self):
        self.assertEqual(in_body("return a ? b(c, d) : e;"),
                         [("condition", "return a ? (e) : (b(c, d));")])

    def test_statements_are_removed(self):
        for before in ("a(b);", "a = b;", "a->b().c(d);", "++a;", "a(u'x', [b] { return c; });", "return;",
                       "Q_EMIT a();", "co_await a;", "throw a;", "delete a;"):
            self.assertEqual(in_body(before), [("statement", ";")], before)
        self.assertIn(("statement", "if (a) ; b();"), in_body("if (a) c(); b();"))
        self.assertIn(("statement", "{ } ; b();"), in_body("{ } c(); b();"))
        self.assertIn(("statement", "switch (a) { case B: ; }"),
                      in_body("switch (a) { case B: c(); }"))

    def test_declarations_and_results_stay(self):
        for before in ("int a = b;", "const A a(b);", "auto a = b();", "QList<A> a(b);", "A *a = b();",
                       "return a(b);", "using A = B<C>;"):
            self.assertEqual(in_body(before), [], before)
        self.assertEqual(changed("class A { A(const B &); void f() const; B m_b = c(); };"), [])

    def test_rows_are_dropped_and_swapped(self):
        table = "const auto a = b({ {c, d}, {e, f}, {g, h}, });"
        self.assertEqual(changed(table), [
            ("row dropped", "const auto a = b({ {e, f}, {g, h}, });"),
            ("rows swapped", "const auto a = b({ {e, f}, {c, d}, {g, h}, });"),
            ("row dropped", "const auto a = b({ {c, d}, {g, h}, });"),
            ("rows swapped", "const auto a = b({ {c, d}, {g, h}, {e, f}, });"),
            ("row dropped", "const auto a = b({ {c, d}, {e, f}, });"),
        ])

    def test_words_of_a_list_are_dropped(self):
        self.assertIn(("row dropped", 'A a{"b"};'), changed('A a{"b", "c"};'))

    def test_comments_directives_checks_and_logging_stay(self):
        self.assertEqual(changed('#include "a"\n#define A \\\n  "b"\n// a < b\n/* "c" */\n'), [])
        self.assertEqual(in_body('static_assert(1 < 2, "a"); qCDebug(a) << "b" << 1;'), [])
        self.assertEqual(changed("Q_LOGGING_CATEGORY(a, \"b\")\n[[nodiscard(\"c\")]] int d();"), [])

    def test_a_parameter_is_no_name_of_qml(self):
        self.assertEqual(changed("A f(B id) { return a(1); }"),
                         [("constant", "A f(B id) { return a(2); }")])

    def test_lines_keep_their_numbers(self):
        text = "void f()\n{\n    a(b,\n      c);\n    d();\n}\n"
        for mutation in mutants.mutations("scan/A.cpp", text):
            self.assertEqual(mutants.mutated(text, mutation).count("\n"), text.count("\n"))


class Qml(unittest.TestCase):
    """What is made of QML."""

    def test_bindings_and_children_are_removed(self):
        text = "Item {\nid: a\nwidth: b\nonClicked: {\nc();\n}\nBehavior on x {}\nText {}\n}"
        self.assertEqual(changed(text, "views/A.qml"), [
            ("statement", "Item { id: a onClicked: { c(); } Behavior on x {} Text {} }"),
            ("statement", "Item { id: a width: b Behavior on x {} Text {} }"),
            ("statement", "Item { id: a width: b onClicked: { ; } Behavior on x {} Text {} }"),
            ("row dropped", "Item { id: a width: b onClicked: { c(); } Text {} }"),
            ("row dropped", "Item { id: a width: b onClicked: { c(); } Behavior on x {} }"),
        ])

    def test_properties_keep_their_declaration(self):
        text = "Item {\nrequired property int a\nproperty int b: c\nsignal d\n}"
        self.assertEqual(changed(text, "views/A.qml"), [])

    def test_expressions_are_changed(self):
        text = "Item {\nproperty int a: b === c ? 1 : d\nfunction e(): Item {\nf('x');\n}\n}"
        self.assertEqual(changed(text, "views/A.qml"), [
            ("comparison", text.replace("===", "!==").replace("\n", " ")),
            ("condition", text.replace("1 : d", "(d) : (1)").replace("\n", " ")),
            ("constant", text.replace("1 :", "2 :").replace("\n", " ")),
            ("statement", text.replace("f('x')", "").replace("\n", " ")),
            ("string", text.replace("'x'", "''").replace("\n", " ")),
        ])

    def test_names_for_tests_and_imports_stay(self):
        text = 'pragma ComponentBehavior: Bound\nimport QtQuick 2.15\nItem {\nobjectName: "a"\n}'
        self.assertEqual(changed(text, "views/A.qml"), [])


class Kept(unittest.TestCase):
    """The list of mistakes that change nothing."""

    TEXT = "int f()\n{\n    return a < b;\n}\n"

    def reason(self, kept, path="scan/A.cpp"):
        """The list's reason for the first mistake in the text."""
        mutation = mutants.mutations(path, self.TEXT)[0]
        with tempfile.TemporaryDirectory() as place:
            file = pathlib.Path(place) / "kept.txt"
            file.write_text("# A comment.\n\n" + kept)
            return mutants.Kept(file).reason(mutants.Mutant(path, self.TEXT, mutation))

    def test_a_mistake_is_found_wherever_its_line_is(self):
        kept = "scan/A.cpp\n-return a < b;\n+return a <= b;\nThey\ndiffer.\n"
        self.assertEqual(self.reason(kept), "They differ.")
        self.assertEqual(self.reason(kept, "scan/B.cpp"), "")

    def test_a_kind_of_mistake_is_found_in_the_whole_file(self):
        kept = "scan/A.cpp\ncomparison\nNobody compares.\n"
        self.assertEqual(self.reason(kept), "Nobody compares.")
        self.assertEqual(self.reason(kept.replace("comparison", "string")), "")


class Views(unittest.TestCase):
    """Mistakes in QML, which needs no build."""

    def test_each_is_tried_in_views_of_its_own(self):
        text = "Item {\n    width: 5\n    height: 7\n}\n"
        chosen = [mutants.Mutant("views/A.qml", text, mutation)
                  for mutation in mutants.mutations("views/A.qml", text)]
        tried = []
        with tempfile.TemporaryDirectory() as place:
            tree = mutants.Tree.__new__(mutants.Tree)
            tree.place, tree.source = pathlib.Path(place), pathlib.Path(place) / "source"
            (tree.source / "views").mkdir(parents=True)
            tree.compiled = str.encode
            tree.noticed_by = lambda mutant, steps, where: tried.append(
                (mutant, pathlib.Path(where[mutants.VIEWS], "A.qml").read_text()))
            found = list(tree.attempt_views(chosen, lambda: False))
        self.assertTrue(chosen)
        self.assertCountEqual(found, [(mutant, "survived", "") for mutant in chosen])
        self.assertCountEqual(tried, [(mutant, mutant.after) for mutant in chosen])


class Together(unittest.TestCase):
    """Many mistakes in one program, of which the environment chooses one."""

    TEXT = """#include <initializer_list>
constexpr int two() { return 2; }
int main(int count, char **)
{
    int sum = 0;
    for (const int value : {1, two()})
        sum += value;
    return count < 1 ? 0 : sum;
}
"""

    def variants(self, mutations=None):
        source = mutants.Source("scan/A.cpp", self.TEXT)
        return mutants.Variants(source, mutations or mutants.mutations("scan/A.cpp", self.TEXT))

    def built(self, text, place):
        file = pathlib.Path(place, "A.cpp")
        file.write_text(text)
        return subprocess.run(["g++", "-o", file.with_suffix(""), file], check=False,
                              capture_output=True, text=True, env={"PATH": "/usr/bin", "LC_ALL": "C"})

    def status(self, place, number):
        return subprocess.run([pathlib.Path(place, "A")], check=False,
                              env={mutants.VARIABLE: str(number)}).returncode

    def test_each_acts_as_if_it_were_alone(self):
        variants = self.variants()
        with tempfile.TemporaryDirectory() as place:
            self.assertEqual(self.built(variants.text, place).stderr, "")
            together = {0: self.status(place, 0)}
            for number in variants.numbered:
                together[number] = self.status(place, number)
            for number, mutation in variants.numbered.items():
                self.built(mutants.mutated(self.TEXT, mutation), place)
                self.assertEqual(together[number], self.status(place, 0), mutation)
        self.assertEqual(together[0], 3)
        self.assertGreater(len(set(together.values())), 2)

    def test_what_the_compiler_must_know_is_left_out(self):
        self.assertEqual([mutation.text for mutation in self.variants().others], ["3"])

    def test_those_that_do_not_compile_are_told(self):
        mistake = mutants.mutations("scan/A.cpp", self.TEXT)[1]
        wrong = mistake._replace(text="unknown")
        variants = self.variants([wrong, *mutants.mutations("scan/A.cpp", self.TEXT)])
        with tempfile.TemporaryDirectory() as place:
            self.assertEqual(variants.failed(self.built(variants.text, place).stderr, "A.cpp"),
                             {wrong})


class Key(unittest.TestCase):
    """Which mistake of an earlier run a mistake is."""

    @staticmethod
    def key(lines):
        text = "\n".join(lines)
        start = text.index("mistaken")
        mutation = mutants.mutations("scan/A.cpp", "bool a() { return 1 == 2; }")[0]
        return mutants.Mutant("scan/A.cpp", text,
                              mutation._replace(start=start, end=start + 8, text="")).key

    def test_ten_lines_around_it_tell(self):
        lines = [f"line {n}" for n in range(30)]
        lines[15] = "a mistaken line"
        keys = [self.key(lines[:n] + ["another"] + lines[n + 1:]) for n in (4, 5, 25, 26)]
        usual = self.key(lines)
        self.assertEqual([key == usual for key in keys], [True, False, False, True])

    def test_the_same_mistake_is_another_one_elsewhere_in_the_line(self):
        self.assertNotEqual(self.key(["a mistaken line"]), self.key(["mistaken line"]))


def mistake(text="bool a() { return 1 == 2; }"):
    """The first mistake in a text."""
    return mutants.Mutant("scan/A.cpp", text, mutants.mutations("scan/A.cpp", text)[0])


class Known(unittest.TestCase):
    """Which results of earlier runs still hold."""

    def is_known(self, outcome, file=None, tests=None):
        """Whether a result is, of a file with this text and these tests; else of today's."""
        one = mistake()
        trial = mutants.Trial({}, 1, mock.Mock(reason=lambda _: None))
        hashes = tests or trial.hashes[one.room.tests], mutants.content_hash(file or one.before)
        trial.results[one.key] = [outcome, "", *hashes]
        return trial.is_known(one)

    def test_a_killed_one_holds_as_long_as_its_surroundings(self):
        self.assertTrue(self.is_known("killed", "another file", "other tests"))

    def test_others_end_with_a_change_of_the_file(self):
        for outcome in ("survived", "changes nothing", "does not compile"):
            self.assertTrue(self.is_known(outcome), outcome)
            self.assertFalse(self.is_known(outcome, "another file"), outcome)

    def test_a_survivor_ends_with_a_change_of_the_tests(self):
        self.assertFalse(self.is_known("survived", tests="other tests"))
        self.assertTrue(self.is_known("changes nothing", tests="other tests"))


class Elsewhere(unittest.TestCase):
    """What is not built here, and is elsewhere."""

    def setUp(self):
        self.top = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name, value in {"TOP": self.top, "SCORES": self.top / "scores.txt"}.items():
            self.enterContext(mock.patch.object(mutants, name, value))
        self.one = mistake()
        (self.top / "scan").mkdir()
        (self.top / self.one.path).write_text(self.one.before)

    def counts(self, outcome, outcome_elsewhere):
        """The score of a file with one mistake."""
        place = self.top / "build/debian/new/build/mutants"
        place.mkdir(parents=True)
        (place / "results.json").write_text(
            json.dumps({self.one.key: [outcome_elsewhere, "", "", ""]}))
        with mock.patch("builtins.print"):
            return mutants.report([self.one], {self.one.key: [outcome]},
                                  mock.Mock(reason=lambda _: None))[self.one.path]

    def test_counts_where_it_is_not_built_here(self):
        self.assertEqual(self.counts("not built", "killed"), {"killed": 1})

    def test_counts_nowhere_else(self):
        self.assertEqual(self.counts("survived", "killed"), {"survived": 1})

    def test_a_file_that_is_built_nowhere_keeps_its_score(self):
        scores = mutants.Scores()
        scores.take({self.one.path: mutants.collections.Counter(killed=3)}, {self.one.path: "text"})
        scores.take({self.one.path: self.counts("not built", "not built")}, {self.one.path: "text"})
        self.assertEqual(mutants.Scores().rows[self.one.path][0], 3)

    def test_a_score_is_of_the_text_that_was_tried(self):
        scores = mutants.Scores()
        scores.take({self.one.path: mutants.collections.Counter(killed=3)}, {self.one.path: "text"})
        self.assertFalse(scores.is_current(self.one.path))
        scores.take({self.one.path: mutants.collections.Counter(killed=3)},
                    {self.one.path: self.one.before})
        self.assertTrue(scores.is_current(self.one.path))


if __name__ == "__main__":
    unittest.main()
