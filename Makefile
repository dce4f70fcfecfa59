# The verbs. Each does its own set-up; the scripts behind them can be called directly too.
.PHONY: run demo test unit fmt lint bench screenshots package fuzz soak load

run:
	scripts/run

demo:
	scripts/run --demo

test:
	scripts/test

unit:
	scripts/test --unit

fmt:
	scripts/setup
	git ls-files --cached --others --exclude-standard -- '*.cpp' '*.h' '*.c' | xargs clang-format -i

lint:
	scripts/lint

bench:
	scripts/bench

screenshots:
	scripts/screenshots

package:
	scripts/package

fuzz:
	scripts/fuzz 600

soak:
	scripts/soak

load:
	scripts/load
