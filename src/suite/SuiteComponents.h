#pragma once

// Registers the suite's own components with ComponentFactory under their
// class identities: the report store, the calculation engine, the patient
// query and the string server. Each created component reads the registry
// settings afresh. The composition root calls this once at start-up.
void RegisterSuiteComponents();
