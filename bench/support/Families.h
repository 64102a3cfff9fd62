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
void compareCoroutines();
void compareObserving();
void compareThreadedTask();
void compareWatching();
void compareFiles();
void compareFormatters();
void compareSystem();
void comparePropertyLists();
void compareIcuStrings();

// Peers, each there when its library was found.
void comparePlainFiles();
void compareQt();
void compareQtStrings();
void compareQtFiles();
void compareQtFormatters();
void compareQtDictionaries();
void compareQtPropertyLists();
void compareQtWatching();
void compareQtObserving();
void compareGLib();
void compareGLibDictionaries();
void compareGLibWatching();
void compareGLibObserving();
void compareBoostObserving();
void compareSpdlog();
void compareAbseilDictionaries();
void compareRobinMapDictionaries();

}  // namespace qz::bench
