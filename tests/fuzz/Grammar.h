#pragma once

#include <QByteArray>

#include <initializer_list>
#include <random>

/// Random bytes seldom make a row of a table, and a parser that sees no row shows little. A program
/// with a grammar says what a valid input looks like; about half of its inputs are then made of
/// one, and the others are mutations as usual. Grammar.cpp holds the mutator.

using Random = std::minstd_rand; // of 31 bits, the same with each library

/// A valid input with random values; each program with a grammar defines it.
QByteArray validInput(Random &random);

/// Counts what one input held. The end of the run prints the sum.
void countRecords(size_t records);

/// One of these texts.
QByteArray oneOf(Random &random, std::initializer_list<const char *> texts);

/// A number below `limit`, as text.
QByteArray numberBelow(Random &random, unsigned limit);
