'use strict';
// The page of `vemtool html`. The data stands in the script element "vem-data" as JSON, column-wise,
// with every text once in `strings` (index 0 is the empty text):
//   kinds[k]    = [node type, icon number, bitmap number, class name]
//   attrs[a-1]  = [type name, size, variable type, scope, qualifiers, segment, sub segment kind,
//                  flags (1 reference, 2 net variable, 4 in-out, 8 watchable), program number]
//   per node, in pre-order: kind, name, text (0: the name, with " : " and the type name for a
//                  variable that has one; else the string + 1), children (count), open (expanded),
//                  attr (0: no variable), offset
//   keyTasks    = [task node, number of entries, ...]: the path map of each compiled task, its
//                  entries sorted by address: keyNode, keyPrefix (0: no point in the key, else the
//                  string + 1 of the text before the last point), keySuffix (0: the node's name in
//                  upper case, else the string + 1), keyAddress (difference to the entry before)
//   units[]     = [node, code, data and ini segment (index into segments, or -1), path, code path,
//                  checksum, data segment length, program number, global flag, date]
//   segments[]  = [owner node of the table, number, byte size, Motorola format, bytes in hex]
//   lineMaps[]  = [unit path, line, code offset, line, code offset, ...]
//   xref        = [node, unit path, line, kind (1 read, 2 write, 4 call), ...]
//   pictures    = {"i<number>": icon, "b<number>": bitmap}, as data URIs
// The script element "vem-addr" holds what the library's address index answers, in its own JSON
// with its own `strings`:
//   tasks       = [task name, number of spans, number of runs, ...] in the index's order
//   spans       = [start, end, segment, unit name (string + 1, 0: none), role (1 data, 2 code), ...]
//   per run of addresses with one answer: start (difference to the end of the run before in its
//                  task), length, node (+ 1, 0: a part without a node of its own), name, path (0: the
//                  name, else string + 1), into (the run's start less the variable's start), size,
//                  cover (variables covering the address)
// Texts are shown with textContent only, so whatever a name holds is never taken as markup.
(function () {
  const T0 = performance.now();
  const D = JSON.parse(document.getElementById('vem-data').textContent);
  const S = D.strings;
  const N = D.kind.length;
  const ROW = 20;
  const NODE_TYPES = {1: 'base node', 2: 'variable', 3: 'program', 4: 'function block', 5: 'function', 6: 'array',
    10: 'structure', 11: 'task', 12: 'executable', 13: 'resource', 14: 'configuration', 15: 'project',
    16: 'compiled task', 17: 'task container', 18: 'function block instance'};
  const UNIT_TYPES = new Set([3, 4, 5, 16]);

  // --- The tree's shape from the child counts: parent, depth and size of every subtree.
  const parent = new Int32Array(N), depth = new Uint16Array(N), size = new Int32Array(N);
  const open = Uint8Array.from(D.open);
  {
    const stack = [], left = [];
    for (let i = 0; i < N; i++) {
      if (stack.length) {
        const p = stack[stack.length - 1];
        parent[i] = p; depth[i] = depth[p] + 1; left[stack.length - 1]--;
      } else {
        parent[i] = -1;
      }
      stack.push(i); left.push(D.children[i]);
      while (stack.length && left[stack.length - 1] <= 0) {
        const x = stack.pop(); left.pop();
        size[x] = i - x + 1;
      }
    }
    while (stack.length) { const x = stack.pop(); size[x] = N - x; }
  }

  // Upper case as the library makes it: a to z only.
  const upper = (s) => (/[a-z]/.test(s) ? s.replace(/[a-z]+/g, (m) => m.toUpperCase()) : s);
  const nodeType = (i) => D.kinds[D.kind[i]][0];
  const nameOf = (i) => S[D.name[i]];
  const attrOf = (i) => (D.attr[i] ? D.attrs[D.attr[i] - 1] : null);
  function textOf(i) {
    if (D.text[i]) return S[D.text[i] - 1];
    const a = attrOf(i);
    return a && a[0] ? nameOf(i) + ' : ' + S[a[0]] : nameOf(i);
  }
  const hasChildren = (i) => D.children[i] > 0;
  const el = (tag, text, cls) => {
    const e = document.createElement(tag);
    if (text !== undefined) e.textContent = text;
    if (cls) e.className = cls;
    return e;
  };
  const hex = (v, w) => '0x' + v.toString(16).toUpperCase().padStart(w || 0, '0');

  // --- Pictures as classes, so that every row uses the same decoded image.
  {
    let css = '';
    for (const key of Object.keys(D.pictures)) css += '.' + key + '{background-image:url(' + D.pictures[key] + ')}\n';
    document.head.appendChild(el('style', css));
  }
  const iconUri = (i) => D.pictures['i' + D.kinds[D.kind[i]][1]] || '';

  // --- The shown rows: node numbers in the order of the tree, children of collapsed nodes left out.
  const shown = new Int32Array(N);
  let count = 0;
  // In pre-order the next shown node after c is its first child if c is open, else the node behind
  // its subtree.
  function visibleBelow(i, out) {
    const end = i + size[i];
    for (let c = i + 1; c < end; c = open[c] ? c + 1 : c + size[c]) out.push(c);
    return out;
  }
  function rebuild() {
    const list = N ? [0] : [];
    if (N && open[0]) visibleBelow(0, list);
    shown.set(list);
    count = list.length;
  }
  function toggle(row) {
    const i = shown[row];
    if (!hasChildren(i)) return;
    if (open[i]) {
      const end = i + size[i];
      let j = row + 1;
      while (j < count && shown[j] < end) j++;
      shown.copyWithin(row + 1, j, count);
      count -= j - row - 1;
      open[i] = 0;
    } else {
      open[i] = 1;
      const add = visibleBelow(i, []);
      shown.copyWithin(row + 1 + add.length, row + 1, count);
      shown.set(add, row + 1);
      count += add.length;
    }
    render();
  }

  // --- Rendering: only the rows in view exist in the document.
  const tree = document.getElementById('tree');
  const space = document.getElementById('space');
  const pool = [];
  let selected = -1;
  function makeRow() {
    const r = el('div', undefined, 'row');
    r.append(el('span', undefined, 'tg'), el('span', undefined, 'pic'), el('span', undefined, 'tx'));
    space.appendChild(r);
    return r;
  }
  function render() {
    space.style.height = count * ROW + 'px';
    const first = Math.max(0, Math.floor(tree.scrollTop / ROW) - 5);
    const last = Math.min(count, first + Math.ceil((tree.clientHeight || 800) / ROW) + 10);
    let k = 0;
    for (let row = first; row < last; row++, k++) {
      const r = pool[k] || (pool[k] = makeRow());
      const i = shown[row];
      r.style.display = '';
      r.style.top = row * ROW + 'px';
      r.style.paddingLeft = 4 + depth[i] * 18 + 'px';
      r.dataset.row = row;
      r.dataset.node = i;
      r.classList.toggle('sel', i === selected);
      r.children[0].className = 'tg ' + (hasChildren(i) ? (open[i] ? 'b157' : 'b156') : 'b158');
      r.children[1].className = 'pic b' + (D.kinds[D.kind[i]][2] || 158);
      r.children[2].textContent = textOf(i);
    }
    for (; k < pool.length; k++) pool[k].style.display = 'none';
  }
  tree.addEventListener('scroll', render, {passive: true});
  window.addEventListener('resize', render);
  tree.addEventListener('click', (ev) => {
    const r = ev.target.closest('.row');
    if (!r) return;
    const row = +r.dataset.row;
    if (ev.target.classList.contains('tg')) toggle(row);
    else select(shown[row]);
  });
  tree.addEventListener('dblclick', (ev) => {
    const r = ev.target.closest('.row');
    if (r && !ev.target.classList.contains('tg')) toggle(+r.dataset.row);
  });
  tree.addEventListener('keydown', (ev) => {
    if (selected < 0) return;
    const row = rowOf(selected);
    if (row < 0) return;
    if (ev.key === 'ArrowDown' && row + 1 < count) select(shown[row + 1], true);
    else if (ev.key === 'ArrowUp' && row > 0) select(shown[row - 1], true);
    else if ((ev.key === 'ArrowRight' && !open[selected]) || (ev.key === 'ArrowLeft' && open[selected]) || ev.key === 'Enter') toggle(row);
    else return;
    ev.preventDefault();
  });
  function rowOf(i) {
    for (let row = 0; row < count; row++) if (shown[row] === i) return row;
    return -1;
  }
  function scrollToRow(row) {
    const top = row * ROW;
    if (top < tree.scrollTop || top + ROW > tree.scrollTop + tree.clientHeight) tree.scrollTop = Math.max(0, top - tree.clientHeight / 3);
  }
  // Opens the node's ancestors, shows it and selects it.
  function reveal(i) {
    let changed = false;
    for (let p = parent[i]; p >= 0; p = parent[p]) if (!open[p]) { open[p] = 1; changed = true; }
    if (changed) rebuild();
    select(i, true);
  }

  // --- Path maps and the search.
  let pathMap = null, keyTask = null, keyOfNode = null, nextKey = null;
  function keyText(e) {
    const p = D.keyPrefix[e], s = D.keySuffix[e];
    const tail = s ? S[s - 1] : upper(nameOf(D.keyNode[e]));
    return p ? S[p - 1] + '.' + tail : tail;
  }
  const keyAddress = new Float64Array(D.keyNode.length);
  // Key to its first entry and node to its first entry; the next entry of the same key stands in
  // nextKey[2e], of the same node in nextKey[2e + 1].
  function indexKeys() {
    if (pathMap) return;
    const E = D.keyNode.length;
    pathMap = new Map();
    keyTask = new Int32Array(E);
    keyOfNode = new Int32Array(N).fill(-1);
    nextKey = new Int32Array(2 * E).fill(-1);
    const lastOfKey = new Map(), lastOfNode = new Int32Array(N).fill(-1);
    for (let t = 0, e = 0; t < D.keyTasks.length; t += 2) {
      let address = 0;
      for (let k = 0; k < D.keyTasks[t + 1]; k++, e++) {
        address += D.keyAddress[e];
        keyAddress[e] = address;
        keyTask[e] = D.keyTasks[t];
        const key = keyText(e);
        const last = lastOfKey.get(key);
        if (last === undefined) pathMap.set(key, e); else nextKey[2 * last] = e;
        lastOfKey.set(key, e);
        const n = D.keyNode[e];
        if (lastOfNode[n] < 0) keyOfNode[n] = e; else nextKey[2 * lastOfNode[n] + 1] = e;
        lastOfNode[n] = e;
      }
    }
  }
  function chain(e, odd) {
    const list = [];
    for (; e !== undefined && e >= 0; e = nextKey[2 * e + odd]) list.push(e);
    return list;
  }
  function findPath(path) {
    indexKeys();
    const key = upper(path);
    // A function block's own key keeps the blank in front of " : " of its name.
    return chain(pathMap.has(key) ? pathMap.get(key) : pathMap.get(key + ' '), 0);
  }
  // --- The search by address: the answers of the library's address index (the same as those of
  // `vemtool query --at`), read from "vem-addr" at the first search.
  let A = null;
  function addressIndex() {
    if (A) return A;
    A = JSON.parse(document.getElementById('vem-addr').textContent);
    A.list = [];
    A.at = new Float64Array(A.start.length);
    for (let t = 0, s = 0, r = 0; t < A.tasks.length; t += 3) {
      const task = {name: A.strings[A.tasks[t]], span0: s, spanEnd: s + A.tasks[t + 1], run0: r, runEnd: r + A.tasks[t + 2]};
      let end = 0;
      for (let k = task.run0; k < task.runEnd; k++) { A.at[k] = end + A.start[k]; end = A.at[k] + A.length[k]; }
      A.list.push(task);
      s = task.spanEnd; r = task.runEnd;
    }
    return A;
  }
  // The last k in [lo, hi) with start(k) <= v, or -1.
  function lastAtOrBelow(start, lo, hi, v) {
    let a = lo, b = hi;
    while (a < b) { const mid = (a + b) >> 1; if (start(mid) <= v) a = mid + 1; else b = mid; }
    return a > lo ? a - 1 : -1;
  }
  const SEGMENT_ROLE = {1: 'data', 2: 'code'};
  // Lines as `query --at ADDR --dec` prints them, and the nodes they name.
  function findAddress(place, address, taskName) {
    const X = addressIndex();
    const lines = [], hits = [];
    let where = '';
    const tasks = taskName ? X.list.filter((t) => upper(t.name) === upper(taskName)) : X.list;
    if (taskName && !tasks.length) return {lines: ['no compiled task ' + taskName], hits, miss: true};
    for (const t of tasks) {
      const s = lastAtOrBelow((k) => X.spans[5 * k], t.span0, t.spanEnd, address);
      const inSpan = s >= 0 && address < X.spans[5 * s + 1];
      const segment = inSpan ? X.spans[5 * s + 2] : 65535, offset = inSpan ? address - X.spans[5 * s] : 0;
      const r = lastAtOrBelow((k) => X.at[k], t.run0, t.runEnd, address);
      if (r >= 0 && address < X.at[r] + X.length[r]) {
        const name = X.strings[X.name[r]], path = X.path[r] ? X.strings[X.path[r] - 1] : name;
        const start = X.at[r] - X.into[r];
        let line = t.name.padEnd(10) + ' ' + String(address).padStart(6) + '  seg ' + segment + '+' + offset + '  ' + name;
        if (X.size[r]) line += '  byte ' + (address - start) + ' of ' + X.size[r];
        if (path !== name) line += '  (path ' + path + ')';
        if (X.cover[r] > 1) line += '  [' + X.cover[r] + ' variables cover it]';
        lines.push(line);
        hits.push({node: X.node[r] - 1, path});
      } else if (inSpan && !where) {
        const unit = X.spans[5 * s + 3];
        where = ' (' + t.name + ', seg ' + segment + '+' + offset + ', ' + (SEGMENT_ROLE[X.spans[5 * s + 4]] || 'segment') +
          ' of ' + (unit ? X.strings[unit - 1] : 'no unit') + ')';
      }
    }
    if (!lines.length) return {lines: [place + ': no variable' + (where || ' (outside every segment)')], hits, miss: true};
    return {lines, hits};
  }
  function describeEntry(e) {
    const i = D.keyNode[e], a = attrOf(i);
    let text = keyText(e).trim() + '  address ' + keyAddress[e];
    if (a) text += '  (segment ' + a[5] + ', offset ' + D.offset[i] + ', ' + textOf(i) + ')';
    else text += '  (' + textOf(i) + ')';
    return text;
  }
  const results = document.getElementById('results');
  function showHits(lines, nodes, what, miss) {
    results.append(el('div', miss ? 'nothing found for ' + what : lines.length + (lines.length > 1 ? ' hits' : ' hit') + ' for ' + what, miss ? 'miss' : ''));
    lines.slice(0, 200).forEach((text, k) => {
      const line = el('div', text, miss ? 'miss result' : 'hit result');
      if (!miss && nodes[k] >= 0) {
        line.dataset.node = nodes[k];
        line.addEventListener('click', () => reveal(nodes[k]));
      }
      results.append(line);
    });
    if (!miss && nodes[0] >= 0) reveal(nodes[0]);
  }
  function search(query) {
    query = query.trim();
    results.replaceChildren();
    if (!query) return [];
    const m = /^(?:([^:\s]+)\s*[:\s]\s*)?(0x[0-9a-f]+|\d+)$/i.exec(query);
    if (m) {
      const address = m[2].toLowerCase().startsWith('0x') ? parseInt(m[2].slice(2), 16) : parseInt(m[2], 10);
      const found = findAddress(m[2], address, m[1]);
      // An element of an array without element nodes is shown at its array.
      const nodes = found.hits.map((h) => (h.node >= 0 ? h.node : (findPath(h.path).map((e) => D.keyNode[e])[0] ?? -1)));
      showHits(found.lines, nodes, 'address ' + m[2] + (m[1] ? ' in ' + m[1] : ''), found.miss);
      return found.lines;
    }
    const hits = findPath(query);
    showHits(hits.map(describeEntry), hits.map((e) => D.keyNode[e]), 'path ' + query, !hits.length);
    return hits;
  }
  document.getElementById('search-form').addEventListener('submit', (ev) => {
    ev.preventDefault();
    search(document.getElementById('search').value);
  });

  // --- Details of the selected node.
  let xrefOfNode = null;
  function xrefHits(i) {
    if (!xrefOfNode) {
      xrefOfNode = new Map();
      for (let k = 0; k < D.xref.length; k += 4) {
        if (!xrefOfNode.has(D.xref[k])) xrefOfNode.set(D.xref[k], []);
        xrefOfNode.get(D.xref[k]).push(k);
      }
    }
    return xrefOfNode.get(i) || [];
  }
  function table(rows) {
    const t = el('table');
    for (const [k, v, cls] of rows) {
      const tr = el('tr');
      tr.append(el('th', k), el('td', String(v), cls));
      t.append(tr);
    }
    return t;
  }
  function xrefTable(i) {
    const hits = xrefHits(i);
    const box = el('div', undefined, 'xref');
    box.dataset.node = i;
    box.append(el('h3', 'Cross reference of ' + textOf(i) + ': ' + hits.length + (hits.length === 1 ? ' place' : ' places')));
    if (hits.length) {
      const t = el('table');
      for (const k of hits) {
        const tr = el('tr');
        const kind = D.xref[k + 3];
        tr.append(el('td', S[D.xref[k + 1]]), el('td', 'line ' + D.xref[k + 2], 'n'), el('td', kind === 1 ? 'read' : kind === 2 ? 'write' : 'call'));
        t.append(tr);
      }
      box.append(t);
    }
    return box;
  }
  function hexView(seg) {
    const bytes = seg[4];
    const lines = [];
    for (let at = 0; at < bytes.length / 2; at += 16) {
      let line = at.toString(16).toUpperCase().padStart(4, '0') + ' ';
      for (let b = at; b < Math.min(at + 16, bytes.length / 2); b++) line += ' ' + bytes.substr(b * 2, 2).toUpperCase();
      lines.push(line);
    }
    return el('pre', lines.join('\n'), 'hex');
  }
  function unitDetails(box, i, u) {
    box.append(table([
      ['path', S[u[4]]], ['code path', S[u[5]]], ['checksum', u[6], 'n'], ['date', u[10], 'n'],
      ['data segment length', u[7], 'n'], ['program number', u[8], 'n'], ['global', u[9], 'n']]));
    box.append(el('h3', 'Segments'));
    const t = el('table');
    const views = el('div');
    ['code', 'data', 'ini'].forEach((label, k) => {
      const s = u[1 + k];
      const tr = el('tr');
      tr.append(el('th', label));
      if (s < 0) { tr.append(el('td', 'none')); t.append(tr); return; }
      const seg = D.segments[s];
      tr.append(el('td', 'segment ' + seg[1] + ' of ' + textOf(seg[0]) + ', ' + seg[4].length / 2 + ' bytes, ' +
        (seg[3] ? 'Motorola order' : 'Intel order') + ', byte size ' + seg[2]));
      const td = el('td');
      const b = el('button', 'hex', 'small');
      b.dataset.segment = seg[1];
      b.addEventListener('click', () => {
        b.disabled = true;
        const v = hexView(seg);
        v.dataset.segment = seg[1];
        views.append(el('h3', label + ' segment ' + seg[1] + ' (' + (seg[3] ? 'Motorola' : 'Intel') + ' order, as the target holds it)'), v);
      });
      td.append(b);
      tr.append(td);
      t.append(tr);
    });
    box.append(t, views);
    const map = D.lineMaps.find((m) => S[m[0]] === S[u[4]]);
    box.append(el('h3', 'Line map' + (map ? ' (' + (map.length - 1) / 2 + ' lines)' : ': none')));
    if (map) {
      const lt = el('table', undefined, 'linemap');
      for (let k = 1; k < map.length; k += 2) {
        const tr = el('tr');
        tr.append(el('td', 'line ' + map[k], 'n'), el('td', '-> code offset ' + hex(map[k + 1], 4), 'n'));
        lt.append(tr);
      }
      box.append(lt);
    }
    // The unit's own variables that code reads, writes or calls; a click shows where.
    const used = [];
    let others = 0;
    for (let c = i + 1; c < i + size[i]; c += size[c]) {
      if (!D.attr[c] && !UNIT_TYPES.has(nodeType(c))) continue;
      if (xrefHits(c).length) used.push(c); else others++;
    }
    box.append(el('h3', 'Variables used in code'));
    const list = el('div');
    const shownXref = el('div');
    for (const c of used) {
      const v = el('div', textOf(c) + '  (' + xrefHits(c).length + ')', 'hit var');
      v.dataset.node = c;
      v.addEventListener('click', () => shownXref.replaceChildren(xrefTable(c)));
      list.append(v);
    }
    if (others) list.append(el('div', others + (others === 1 ? ' other variable or unit' : ' other variables and units') + ' with no place in code', 'hint'));
    box.append(list, shownXref);
  }
  function select(i, scroll) {
    selected = i;
    if (scroll) { const row = rowOf(i); if (row >= 0) scrollToRow(row); }
    render();
    const box = document.getElementById('details');
    box.replaceChildren();
    box.dataset.node = i;
    const h = el('h2');
    const img = el('img');
    img.src = iconUri(i);
    img.alt = '';
    h.append(img, el('span', textOf(i)));
    box.append(h);
    const [type, icon, bitmap, cls] = D.kinds[D.kind[i]];
    const rows = [['name', nameOf(i)], ['node type', type + ' (' + (NODE_TYPES[type] || '?') + ')'], ['class', S[cls]],
      ['icon / bitmap', icon + ' / ' + bitmap], ['expanded', open[i]], ['children', D.children[i], 'n']];
    const a = attrOf(i);
    if (a) {
      rows.push(['type', S[a[0]] || '-'], ['variable type', a[2], 'n'], ['size', a[1], 'n'], ['offset', D.offset[i], 'n'],
        ['segment', a[5], 'n'], ['scope', a[3], 'n'], ['qualifiers', hex(a[4]), 'n'], ['sub segment kind', a[6], 'n'],
        ['reference', a[7] & 1], ['net variable', (a[7] >> 1) & 1], ['in-out', (a[7] >> 2) & 1],
        ['can be watched', (a[7] >> 3) & 1], ['program number', a[8], 'n']);
    }
    box.append(table(rows));
    indexKeys();
    const keys = chain(keyOfNode[i], 1);
    if (keys.length) {
      box.append(el('h3', 'Paths and addresses'));
      const t = el('table', undefined, 'keys');
      for (const e of keys) {
        const tr = el('tr');
        tr.append(el('td', keyText(e).trim()), el('td', 'address ' + keyAddress[e], 'n'), el('td', 'in ' + nameOf(keyTask[e])));
        t.append(tr);
      }
      box.append(t);
    }
    const u = D.units.find((x) => x[0] === i);
    if (u) unitDetails(box, i, u);
    else if (a || xrefHits(i).length) box.append(xrefTable(i));
  }

  // --- First paint.
  document.getElementById('file').textContent = D.file + '  ' + N + ' nodes';
  if (N) document.getElementById('logo').src = iconUri(0);
  rebuild();
  render();
  const timing = window.vemTiming = {parsed: 0, rendered: 0, painted: 0};
  timing.rendered = performance.now();
  timing.parsed = timing.rendered - T0;
  requestAnimationFrame(() => setTimeout(() => {
    timing.painted = performance.now();
    document.getElementById('status').textContent = 'shown in ' + Math.round(timing.painted) + ' ms';
  }, 0));
  window.vem = {search, reveal, toggle, findPath, findAddress, textOf, rowOf, count: () => count};
})();
