// Validates glTF files: node validate.cjs FOLDER_OF_THE_MODULE FILE... prints what the Khronos
// validator says of each and exits with 1 when that is an error or a warning.
const fs = require('fs');
const path = require('path');
const validator = require(path.join(path.resolve(process.argv[2]), 'node_modules', 'gltf-validator'));

(async () => {
  for (const file of process.argv.slice(3)) {
    const { issues } = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), { uri: file });
    console.log(`${file}: ${issues.numErrors} errors, ${issues.numWarnings} warnings, ${issues.numInfos} infos`);
    for (const m of issues.messages) console.log(`  ${m.code} ${m.pointer}: ${m.message}`);
    if (issues.numErrors + issues.numWarnings > 0) process.exitCode = 1;
  }
})();
