/// @file
/// Every group of comparisons, in the order of the table.
#pragma once

namespace qz::bench {

void compareDispatch();
void compareObjects();
void compareKeyValueAccess();
void compareCollections();
void compareDictionaries();
void compareArrays();
void compareSorting();
void compareStrings();
void compareMessages();
void compareThreads();
void compareWatching();
void compareFiles();
void compareFormatters();
void compareSystem();
void comparePropertyLists();

void compareQt();  // defined when QZ_BENCH_QT is
void compareQtStrings();
void compareQtFormatters();
void compareGLib();    // defined when QZ_BENCH_GLIB is
void compareSpdlog();  // defined when QZ_BENCH_SPDLOG is
void compareQtDictionaries();
void compareGLib();  // defined when QZ_BENCH_GLIB is
void compareGLibDictionaries();
void compareObserving();
void compareThreadedTask();

void compareQt();  // defined when QZ_BENCH_QT is
void compareQtStrings();
void compareQtObserving();
void compareGLib();  // defined when QZ_BENCH_GLIB is
void compareGLibObserving();
void compareBoostObserving();  // defined when QZ_BENCH_BOOST is

}  // namespace qz::bench
